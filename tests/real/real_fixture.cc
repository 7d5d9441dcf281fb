#include "real/real_fixture.h"

#include <cerrno>
#include <cstring>

namespace corvane_test {

std::vector<Bytes> ChunksFor(size_t frames, uint32_t seed) {
  return Chunks(Noise(frames * kFrameSamples, 1, seed), kChunkSize);
}

Bytes Join(const std::vector<Bytes>& frames, size_t first, size_t end) {
  Bytes all;
  for (size_t n = first; n < end; ++n) {
    all.insert(all.end(), frames[n].begin(), frames[n].end());
  }
  return all;
}

Reply WriteFailed(const std::string& path, int errnum) {
  return ErrnoError("WRITE_FAILED", "Failed to append AAC frame", path, errnum);
}

std::string DrainLine(const std::string& path, int errnum,
                      const std::string& reason) {
  return Warning("codec drain on " + reason + " failed for " + path + ": " +
                 WriteFailed(path, errnum).message);
}

std::string CloseStepLine(const std::string& what, const std::string& path,
                          int errnum, const std::string& reason) {
  return Warning(what + " on " + reason + " failed for " + path + ": " +
                 strerror(errnum));
}

Reply NothingToStop() {
  return PlainError("NOT_RECORDING", "stop with no open recording");
}

void RealTest::TearDown() {
  Cancel();
  EXPECT_EQ(OpenDescriptors(), before_);
  ChannelTest::TearDown();
}

std::vector<Bytes> RealTest::FramesOf(const std::vector<Bytes>& chunks) {
  const std::string path = Path("undisturbed.aac");
  Start(path);
  AppendAll(chunks);
  Stop();
  TakeTranscript();
  return SplitFrames(ReadFile(path));
}

Bytes RealTest::RecordedAt(const std::string& path, size_t chunks) {
  Start(path);
  AppendAll(ChunksFor(chunks));
  EXPECT_EQ(Stop().kind, Reply::Kind::kFigures);
  TakeTranscript();
  return ReadFile(path);
}

void RealTest::AppendAll(const std::vector<Bytes>& chunks) {
  for (const Bytes& chunk : chunks) EXPECT_EQ(Append(chunk), NullReply());
}

Reply RealTest::AppendUntilRefused(const std::vector<Bytes>& chunks,
                                   size_t* count) {
  for (*count = 0; *count < chunks.size(); ++*count) {
    const Reply reply = Append(chunks[*count]);
    if (reply.kind == Reply::Kind::kError) return reply;
  }
  return NullReply();
}

void RealTest::ExpectTranscript(const Lines& lines) {
  EXPECT_EQ(TakeTranscript(), lines);
}

void RealTest::ExpectFailed(const std::string& method, const Reply& error,
                            Lines before) {
  before.push_back(Failed(method, error));
  before.push_back(Answer(method, error));
  ExpectTranscript(before);
}

void RealTest::ExpectRefused(const std::string& path, int errnum,
                             const std::string& wav) {
  const bool missing = errnum == ENOENT;
  TakeTranscript();
  Start(path);
  ExpectFailed("start",
               ErrnoError("WRITE_FAILED", "Failed to create capture file", path,
                          errnum));
  ResumePath(path);
  ExpectFailed("resumePath",
               ErrnoError(missing ? "CAPTURE_MISSING" : "WRITE_FAILED",
                          "capture not available for resume", path, errnum));
  FinalizePath(path);
  ExpectFailed("finalizePath",
               ErrnoError(missing ? "CAPTURE_MISSING" : "FINALIZE_FAILED",
                          "capture not available", path, errnum),
               {SealStartLine(path, 0, "finalizePath")});
  FinalizeWav(path);
  ExpectFailed("finalizeWavOnly",
               ErrnoError(missing ? "CAPTURE_MISSING" : "FINALIZE_FAILED", wav,
                          path, errnum));
}

Reply RealTest::FinalizeWav(const std::string& path) {
  return Call(
      "finalizeWavOnly",
      Value::Map({{"wavPath", path}, {"sampleRate", kRate}, {"channels", 1}}));
}

void RealTest::ExpectRecovered(const std::string& path, const Bytes& whole) {
  const int64_t ms = FramesToMs(SplitFrames(whole).size(), kRate);
  EXPECT_THAT(FinalizePath(path), Sealed(path, ms));
  EXPECT_EQ(ReadFile(path), whole);

  TakeTranscript();
  EXPECT_EQ(ResumePath(path), NullReply());
  ExpectTranscript(
      {ResumeLine(path, whole.size(), ms), Answer("resumePath", NullReply())});
  const std::vector<Bytes> more = ChunksFor(2, 7);
  AppendAll(more);
  EXPECT_EQ(Stop().kind, Reply::Kind::kFigures);
  EXPECT_EQ(ReadFile(path),
            Concat(whole, Join(FramesOf(more), 0, more.size() + 1)));
}

void DiskTest::SetUp() {
  disk_.emplace(Path("disk"));
  if (!disk_->refusal().empty()) GTEST_SKIP() << disk_->refusal();
}

}  // namespace corvane_test
