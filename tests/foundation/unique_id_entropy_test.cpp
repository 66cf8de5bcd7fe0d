// What UniqueId::generate() does when the system's random service fails. The case needs a process
// of its own, in which that service is made to fail for good.
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <boost/uuid/entropy_error.hpp>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include "vornath_data/unique_id.hpp"
#include "vornath_data/vrdm.h"

namespace {

constexpr int kCannotBlock = 77;

// From here on the system call answers EIO. False if the kernel doesn't allow that.
bool blockRandomness() {
  sock_filter program[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_getrandom, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EIO),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog filter = {sizeof program / sizeof program[0], program};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

// What a call does in a process without randomness: 0 if it raises the error that is expected.
template <typename Call>
int outcomeWithoutRandomness(Call call) {
  const pid_t child = fork();
  if (child != 0) {
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
  }
  if (!blockRandomness()) std::_Exit(kCannotBlock);
  try {
    call();
  } catch (const boost::uuids::entropy_error& caught) {
    std::_Exit(caught.errcode() == EIO && caught.what()[0] != '\0' ? 0 : 2);
  } catch (...) {
    std::_Exit(3);
  }
  std::_Exit(1);
}

TEST(UniqueIdGenerate, RaisesAnEntropyErrorThatTheHostCanCatch) {
  const int outcome =
      outcomeWithoutRandomness([] { static_cast<void>(vrnt::UniqueId::generate()); });
  if (outcome == kCannotBlock) GTEST_SKIP() << "system calls can't be filtered here";
  EXPECT_EQ(outcome, 0);
}

TEST(vrdmCreateScene, LetsTheEntropyErrorPass) {
  const int outcome = outcomeWithoutRandomness([] { vrdmDestroyScene(vrdmCreateScene()); });
  if (outcome == kCannotBlock) GTEST_SKIP() << "system calls can't be filtered here";
  EXPECT_EQ(outcome, 0);
}

}  // namespace
