#include "platform/child_process.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <utility>

#include "tests/support/temporary_folder.h"

namespace platform {
namespace {

std::string ReadAll(ChildProcess& child) {
  std::string all;
  char part[1000];
  for (std::size_t got = child.Read(part, sizeof(part)); got != 0; got = child.Read(part, sizeof(part))) {
    all.append(part, got);
  }
  return all;
}

std::span<const std::uint8_t> AsBytes(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// What a child that runs `check` says: the letter Y or N.
template <typename Check>
std::string InChild(Check check) {
  auto child = ChildProcess::Copy([&](int output) { WriteAll(output, check() ? "Y" : "N", 1); }, {});
  return ReadAll(child);
}

TEST(ChildProcess, ProgramsReadTheirInputAndAnswer) {
  std::string text;
  for (int i = 0; i < 100000; ++i) text += std::to_string(i);  // more than pipes hold
  auto child = ChildProcess::Program({"cat"}, AsBytes(text), {});
  ASSERT_TRUE(child.Started());
  EXPECT_TRUE(ReadAll(child) == text);
  EXPECT_FALSE(child.TimedOut());
  EXPECT_TRUE(child.EndedWell());
}

TEST(ChildProcess, FailureAndAbsenceShow) {
  auto failing = ChildProcess::Program({"false"}, {}, {});
  EXPECT_EQ(ReadAll(failing), "");
  EXPECT_FALSE(failing.EndedWell());
  auto missing = ChildProcess::Program({"no-such-program"}, {}, {});
  EXPECT_FALSE(missing.Started());
  EXPECT_EQ(ReadAll(missing), "");
  EXPECT_FALSE(missing.EndedWell());
  EXPECT_FALSE(ProgramExists("no-such-program"));
  EXPECT_TRUE(ProgramExists("cat"));
}

TEST(ChildProcess, WhatTakesTooLongIsKilled) {
  auto idle = ChildProcess::Copy(
      [](int output) {
        WriteAll(output, "a", 1);
        pause();
      },
      {.milliseconds = 50});
  EXPECT_EQ(ReadAll(idle), "a");
  EXPECT_TRUE(idle.TimedOut());
  EXPECT_FALSE(idle.EndedWell());
}

TEST(ChildProcess, ProgressGivesMoreTime) {
  auto slow = ChildProcess::Copy(
      [](int output) {
        for (int i = 0; i < 4; ++i) {
          usleep(150000);
          WriteAll(output, "x", 1);
        }
        pause();
      },
      {.milliseconds = 400});
  char letter = 0;
  int letters = 0;
  while (slow.Read(&letter, 1) == 1) {
    ++letters;
    slow.ExtendTime(5000);
  }
  EXPECT_EQ(letters, 4);
  EXPECT_TRUE(slow.TimedOut());
}

TEST(ChildProcess, AMovedOneKeepsItsTime) {
  auto first = ChildProcess::Copy(
      [](int output) {
        usleep(150000);
        WriteAll(output, "a", 1);
        usleep(250000);
        WriteAll(output, "b", 1);
      },
      {.milliseconds = 300});
  ChildProcess second(std::move(first));
  char letter = 0;
  EXPECT_EQ(second.Read(&letter, 1), 1U);
  second.ExtendTime(5000);
  EXPECT_EQ(second.Read(&letter, 1), 1U);
  EXPECT_EQ(letter, 'b');
  EXPECT_FALSE(first.Started());
}

TEST(ChildProcess, EndsWithItsParent) {
  ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
  int told[2];
  ASSERT_EQ(pipe(told), 0);
  const pid_t parent = fork();
  ASSERT_GE(parent, 0);
  if (parent == 0) {
    auto child = ChildProcess::Copy(
        [](int output) {
          const pid_t self = getpid();
          WriteAll(output, &self, sizeof(self));
          pause();
        },
        {.milliseconds = 60000});
    pid_t number = 0;
    child.Read(&number, sizeof(number));
    WriteAll(told[1], &number, sizeof(number));
    kill(getpid(), SIGKILL);
  }
  pid_t child = 0;
  ASSERT_EQ(read(told[0], &child, sizeof(child)), static_cast<ssize_t>(sizeof(child)));
  close(told[0]);
  close(told[1]);
  int status = 0;
  EXPECT_EQ(waitpid(parent, &status, 0), parent);
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
}

TEST(ChildProcess, ProcessorTimeAndMemoryAreBounded) {
  auto busy = ChildProcess::Copy(
      [](int) {
        volatile bool on = true;
        while (on) {
        }
      },
      {.cpuSeconds = 1, .milliseconds = 60000});
  EXPECT_EQ(ReadAll(busy), "");
  EXPECT_FALSE(busy.TimedOut());  // it was the limit of the processor's time
  EXPECT_FALSE(busy.EndedWell());

  const auto maps = [](std::size_t bytes) {
    return mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED;
  };
  EXPECT_EQ(InChild([&] { return maps(std::size_t{512} << 20); }), "Y");
  EXPECT_EQ(InChild([&] { return maps(std::size_t{1100} << 20); }), "N");
}

TEST(ChildProcess, NoFileIsMade) {
  const test_support::TemporaryFolder folder;
  folder.Write("old", "abc");
  const std::string target = (folder.path() / "new").string();
  const std::string old = (folder.path() / "old").string();
  EXPECT_EQ(InChild([&] {
              const int file = open(target.c_str(), O_CREAT | O_WRONLY, 0600);
              return file >= 0 && write(file, "x", 1) == 1;
            }),
            "N");
  EXPECT_EQ(InChild([&] {
              const int file = open(old.c_str(), O_WRONLY);
              return file >= 0 && write(file, "x", 1) == 1;
            }),
            "N");
  EXPECT_EQ(folder.Read("old"), "abc");
}

TEST(ChildProcess, NoNetworkAndNoFurtherProcess) {
  EXPECT_EQ(InChild([] { return socket(AF_INET, SOCK_STREAM, 0) >= 0; }), "N");
  EXPECT_EQ(InChild([] {
              const pid_t pid = fork();
              if (pid == 0) _exit(0);
              return pid > 0 && waitpid(pid, nullptr, 0) == pid;
            }),
            "N");
  auto shell = ChildProcess::Program({"sh", "-c", "echo one; /bin/echo two; echo three"}, {}, {});
  EXPECT_EQ(ReadAll(shell).find("two"), std::string::npos);
}

TEST(ChildProcess, ThreadsMayBeMade) {
  EXPECT_EQ(InChild([] {
              bool ran = false;
              std::thread([&] { ran = true; }).join();
              return ran;
            }),
            "Y");
}

}  // namespace
}  // namespace platform
