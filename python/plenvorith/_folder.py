"""Private folders for what lies on disk while a file is converted.

A process has at most one in /dev/shm, which is memory, and one in the folder of temporary files. It
holds a lock on each, which the system lifts when the process ends, however that happens. So a folder
that can be locked belongs to nobody any more, and whoever comes next removes it; process numbers would
not tell, as containers that share the folder count theirs apart.
"""

from __future__ import annotations

import errno
import fcntl
import os
import shutil
import tempfile

PREFIX = "plenvorith-python-"
MEMORY = "/dev/shm"


def temporary_base() -> str:
    """Where there is room for all that does not fit into memory."""
    return tempfile.gettempdir()


def roomy_base(size: int) -> str:
    """Where to convert a file of so many bytes.

    In memory if there is room for what a conversion may write: a prepared file, a copy of it, the
    result, and what the worker wants to spare before it trusts a copy.
    """
    try:
        status = os.statvfs(MEMORY)
    except OSError:
        return temporary_base()
    free = status.f_bavail * status.f_frsize
    is_usable = os.access(MEMORY, os.W_OK | os.X_OK) and free >= 16 * size + (16 << 20)
    return MEMORY if is_usable else temporary_base()


def _lock(descriptor: int) -> bool:
    """False if a living process has the lock. A file system without locks counts as locked."""
    try:
        fcntl.flock(descriptor, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except BlockingIOError:
        return False
    return True


class PrivateFolder:
    """A folder of this process, empty at first. `close` removes it with all that is in it."""

    def __init__(self, base: str) -> None:
        while not self._make(base):
            pass

    def _make(self, base: str) -> bool:
        """False if another process took the folder for an abandoned one before it was locked."""
        self.path = tempfile.mkdtemp(prefix=PREFIX, dir=base)
        try:
            self._descriptor = os.open(self.path, os.O_RDONLY | os.O_DIRECTORY)
        except FileNotFoundError:
            return False
        try:
            is_ours = _lock(self._descriptor) and os.path.exists(self.path)
        except OSError:
            is_ours = True  # no locks here: then nobody takes it for abandoned
        if not is_ours:
            self.abandon()
        return is_ours

    def abandon(self) -> None:
        """Leaves the folder to the process that this one is a copy of."""
        os.close(self._descriptor)

    def close(self) -> None:
        shutil.rmtree(self.path, ignore_errors=True)
        os.close(self._descriptor)


def remove_abandoned(base: str) -> None:
    """Removes what killed processes of this user left in a folder."""
    try:
        names = [name for name in os.listdir(base) if name.startswith(PREFIX)]
    except OSError:
        return
    for name in names:
        path = os.path.join(base, name)
        try:
            descriptor = os.open(path, os.O_RDONLY | os.O_DIRECTORY | os.O_NOFOLLOW)
        except OSError:
            continue  # gone meanwhile, another user's, or no folder
        try:
            if os.fstat(descriptor).st_uid == os.geteuid() and _lock(descriptor):
                shutil.rmtree(path, ignore_errors=True)
        except OSError as error:
            if error.errno not in (errno.EBADF, errno.ENOLCK, errno.EOPNOTSUPP, errno.EINVAL):
                raise
        finally:
            os.close(descriptor)
