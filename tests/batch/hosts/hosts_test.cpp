#include "batch/hosts/hosts.h"

#include <string>

#include <gmock/gmock.h>
namespace plenvorith {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

HostWish wish(const std::string& logins) {
  HostWish wish;
  wish.logins = logins;
  wish.version = "plenvorith-batch 1.2.3 (Kernel 7)";
  wish.folder = "/out/run";
  return wish;
}

const std::string kJoblog =
    "Seq\tHost\tStarttime\tJobRuntime\tSend\tReceive\tExitval\tSignal\tCommand\n"
    "1\tssh -F c beta\t17.2\t0.6\t0\t5\t0\t0\tp=x\n"
    "\"$p\" --version\n"
    "1\t:\t17.1\t0.1\t0\t5\t0\t0\tp=x\n"
    "\"$p\" --version\n";

std::string answer(const std::string& login, const std::string& version, const std::string& cores) {
  return login + "\t" + version + "\n" + login + "\tcores " + cores + "\n" + login + "\tsees\n";
}

TEST(HostsFrom, TakesHostsWithTheSameVersionThatSeeTheFolder) {
  const HostCheck check =
      hostsFrom(answer("ssh -F c beta", "plenvorith-batch 1.2.3 (Kernel 7)", "8") +
                    answer(":", "plenvorith-batch 1.2.3 (Kernel 7)", "2"),
                kJoblog, wish("ssh -F c beta,:"));
  EXPECT_THAT(check.leftOut, IsEmpty());
  ASSERT_EQ(check.hosts.size(), 2U);
  EXPECT_EQ(check.hosts[0].login, ":");
  EXPECT_EQ(check.hosts[0].jobs, 2);
  EXPECT_EQ(check.hosts[1].login, "ssh -F c beta");
  EXPECT_EQ(check.hosts[1].jobs, 8);
}

TEST(HostsFrom, LeavesOutHostsThatCannotConvert) {
  const HostCheck silent = hostsFrom("", kJoblog, wish("ssh -F c beta,:"));
  EXPECT_THAT(silent.hosts, IsEmpty());
  EXPECT_THAT(silent.leftOut, ElementsAre("host : is left out: no answer",
                                          "host ssh -F c beta is left out: no answer"));
  const HostCheck check = hostsFrom(
      ":\tsh: 1: plenvorith-batch: not found\n:\tcores 2\n"
      "ssh -F c beta\tplenvorith-batch 1.2.2 (Kernel 7)\nssh -F c beta\tcores 8\n",
      kJoblog, wish("ssh -F c beta,:"));
  EXPECT_THAT(check.leftOut,
              ElementsAre("host : is left out: sh: 1: plenvorith-batch: not found",
                          "host ssh -F c beta is left out: it has plenvorith-batch 1.2.2 "
                          "(Kernel 7), this is plenvorith-batch 1.2.3 (Kernel 7)"));
}

TEST(HostsFrom, AsksForTheFolderUnlessFilesAreSent) {
  const std::string blind = ":\tplenvorith-batch 1.2.3 (Kernel 7)\n:\tcores 2\n";
  const std::string joblog = "titles\n1\t:\t17.1\t0.1\t0\t5\t0\t0\tp=x\n";
  EXPECT_THAT(hostsFrom(blind, joblog, wish(":")).leftOut,
              ElementsAre("host : is left out: it does not see /out/run (--transfer sends the "
                          "files)"));
  HostWish sending = wish(":");
  sending.transfer = true;
  EXPECT_EQ(hostsFrom(blind, joblog, sending).hosts.size(), 1U);
}

TEST(HostsFrom, ShowsWhatSshSaysWithoutItsCarriageReturn) {
  const std::string joblog = "titles\n1\tdead\t17.1\t0.1\t0\t0\t255\t0\tp=x\n";
  EXPECT_THAT(
      hostsFrom("dead\tssh: connect: Connection refused\rdead\t\n", joblog, wish("dead")).leftOut,
      ElementsAre("host dead is left out: ssh: connect: Connection refused"));
}

TEST(HostsFrom, GivesAHostTheJobsThatItIsToHave) {
  const std::string answers = answer("ssh -F c beta", "plenvorith-batch 1.2.3 (Kernel 7)", "8") +
                              answer(":", "plenvorith-batch 1.2.3 (Kernel 7)", "2");
  HostWish half = wish("3/ssh -F c beta,:");
  half.jobs = "50%";
  const HostCheck check = hostsFrom(answers, kJoblog, half);
  ASSERT_EQ(check.hosts.size(), 2U);
  EXPECT_EQ(check.hosts[0].jobs, 1);
  EXPECT_EQ(check.hosts[1].jobs, 3);
}

}  // namespace
}  // namespace plenvorith
