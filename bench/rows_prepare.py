"""The rows of plenvorith-prepare."""

from hostile import FORMS, hostile
from inputs import annotated, body, exact, placed_in_inches, without_blanks
from measuring import BENCH, PREPARE, PROGRAM, Run, alternate, run


def in_a_row(*steps):
    """What several processes take together, one after the other."""
    ended = [step() for step in steps]
    return Run(*(sum(getattr(one, what) for one in ended) for what in ("user", "system", "wall")),
               max(one.peak for one in ended), sum(one.faults for one in ended))


def growth(table, form, count, pairs, output):
    """How many times longer a file of this form takes that is four times as long. It is the least of
    some times: what else the machine does only adds. The system divides short times into those of the
    user and its own by guess, so both count."""
    small, large = (lambda path=hostile(form, n): run(PREPARE, path, output, status=None)
                    for n in (count, 4 * count))
    measured = alternate(large, small, pairs)
    name = f"prepare, {form.__name__.replace('_', ' ')}"
    for four, one in measured:
        table.count("P6", name, "four times", four)
        table.count("P6", name, "once", one)
    return (min(four.processor for four, _ in measured) /
            min(one.processor for _, one in measured))


def measure_prepare(table, runs, scratch):
    ready, stl, copy = scratch / "ready.stp", scratch / "out.stl", scratch / "copy"
    few = max(3, runs // 4)

    def preparing(path):
        return lambda: run(PREPARE, path, ready)

    def baseline(mode, path):
        return lambda: run(BENCH / "baseline_statements", mode, path, copy)

    def prepared(path):
        return lambda: in_a_row(preparing(path), lambda: run(PROGRAM, ready, stl))

    def converted(path):
        return lambda: run(PROGRAM, path, stl)

    if table.wants("P1"):
        path = body(1000)
        table.time("P1", "prepare, millimetres, not placed, 1 GB / scan of the statements and writing",
                   alternate(preparing(path), baseline("copy", path), few, warm_up=False),
                   "≤ 1.4", "≤ 1.2")
    if table.wants("P2"):
        path = placed_in_inches(1000)
        table.time("P2", "prepare, inches, placed, 1 GB / reading and writing every number",
                   alternate(preparing(path), baseline("numbers", path), few, warm_up=False),
                   "≤ 0.7", "≤ 0.5")
    if table.wants("P3"):
        for path in (placed_in_inches(100), without_blanks(exact("plates", 50))):
            with open(path, "rb") as lines:
                instances = sum(line.startswith(b"#") for line in lines)
            table.amount("P3", f"prepare, peak memory, {instances} instances / 64 MiB + 32 B an instance",
                         run(PREPARE, path, ready).peak, (64 << 20) + 32 * instances, "bytes",
                         "≤ 0.3", "≤ 0.25")
    if table.wants("P4"):
        path = body(100)
        table.time("P4", "prepare and convert / convert, 100 MB that need no preparing",
                   alternate(prepared(path), converted(path), runs), "≤ 1.5", "≤ 1.4")
    if table.wants("P5"):
        plain, path = annotated(100_000)
        table.time("P5", "prepare and convert 1 MB of exact geometry with 100,000 triples of "
                         "annotation / convert the geometry alone",
                   alternate(prepared(path), converted(plain), runs), "≤ 1.05", "≤ 1.03")
    if table.wants("P6"):
        worst, form = max((growth(table, form, count, few, ready), form.__name__)
                          for form, count in FORMS.items())
        table.absolute("P6", f"prepare, processor time for four times the size, worst of {len(FORMS)} "
                             f"hostile inputs ({form.replace('_', ' ')})", worst, "times", "≤ 5", "≤ 4.5")
