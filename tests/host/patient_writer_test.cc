// Whoever doesn't read holds nobody up.
#include "terminal/patient_writer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include "engine/file_descriptor.h"
#include "terminal/console.h"

namespace corvane_test {
namespace {

using corvane::FileDescriptor;
using corvane::PatientWriter;

// A pipe that has no room, until it is emptied.
class PatientWriterTest : public ::testing::Test {
 protected:
  PatientWriterTest() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    reader_ = FileDescriptor(ends[0]);
    full_ = FileDescriptor(ends[1]);
    filling_ = std::string(
        static_cast<size_t>(fcntl(full_.get(), F_SETPIPE_SZ, 4096)), '.');
    EXPECT_EQ(write(full_.get(), filling_.data(), filling_.size()),
              static_cast<ssize_t>(filling_.size()));
  }

  // What comes out of the pipe, `size` bytes of it behind its filling.
  std::string Read(size_t size) {
    std::string text;
    pollfd entry = {reader_.get(), POLLIN, 0};
    while (text.size() < filling_.size() + size && poll(&entry, 1, 20000) > 0) {
      char buffer[4096];
      const ssize_t got = read(reader_.get(), buffer, sizeof(buffer));
      text.append(buffer, static_cast<size_t>(got));
    }
    return text.substr(filling_.size());
  }

  FileDescriptor reader_;
  FileDescriptor full_;
  std::string filling_;
};

TEST_F(PatientWriterTest, WhatNobodyReadsYetComesInOrderLater) {
  PatientWriter writer(full_.get());
  writer.Write("one ");
  writer.Write("two");
  EXPECT_TRUE(writer.is_behind());
  writer.Flush(std::chrono::milliseconds(0));
  EXPECT_EQ(Read(7), "one two");
  writer.Flush(std::chrono::seconds(20));
  EXPECT_FALSE(writer.is_behind());
}

TEST_F(PatientWriterTest, MoreThanItKeepsIsLostWhole) {
  PatientWriter writer(full_.get());
  writer.Write("first");
  writer.Write(std::string(65537, 'x'));
  writer.Write("last");
  EXPECT_EQ(Read(9), "firstlast");
}

TEST_F(PatientWriterTest, AConsoleThatNobodyReadsReturnsAtOnce) {
  corvane::Console console(full_.get());
  for (int i = 0; i < 1000; ++i) console.Line("line");
  EXPECT_EQ(Read(10).substr(0, 10), "line\nline\n");
}

}  // namespace
}  // namespace corvane_test
