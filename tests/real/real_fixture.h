// The plugin where the system itself fails: nothing is overridden, limits are
// reached, disks are full and files go away. Takes are mono at 48000 Hz and
// arrive frame by frame.
#ifndef CORVANE_TESTS_REAL_REAL_FIXTURE_H_
#define CORVANE_TESTS_REAL_REAL_FIXTURE_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "real/small_disk.h"
#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {

using Lines = std::vector<std::string>;

constexpr int kRate = 48000;
constexpr size_t kFrameSamples = 1024;
constexpr size_t kChunkSize = kFrameSamples * 2;

// The PCM of so many AAC frames, in chunks of one.
std::vector<Bytes> ChunksFor(size_t frames, uint32_t seed = 1);

// What `frames` hold between `first` and `end`, as one piece.
Bytes Join(const std::vector<Bytes>& frames, size_t first, size_t end);

// How the first refused write of a capture is answered.
Reply WriteFailed(const std::string& path, int errnum);
// What closing says of the frames that could not be written either.
std::string DrainLine(const std::string& path, int errnum,
                      const std::string& reason = "stop");
// `what` names the step that failed: "sync" or "close".
std::string CloseStepLine(const std::string& what, const std::string& path,
                          int errnum, const std::string& reason = "stop");
Reply NothingToStop();

class RealTest : public ChannelTest {
 protected:
  RealTest() : before_(OpenDescriptors()) {}
  // Closes what is open; every descriptor must be given back.
  void TearDown() override;

  // The frames of an undisturbed take of these chunks.
  std::vector<Bytes> FramesOf(const std::vector<Bytes>& chunks);
  // A whole take of so many chunks at `path`; what is in the file then.
  Bytes RecordedAt(const std::string& path, size_t chunks);
  // Appends what must be taken.
  void AppendAll(const std::vector<Bytes>& chunks);
  // Appends until one is refused, whose reply it returns; `count` says how
  // many were taken.
  Reply AppendUntilRefused(const std::vector<Bytes>& chunks, size_t* count);

  // The transcript since it was taken last is these lines.
  void ExpectTranscript(const Lines& lines);
  // The same for a call that failed: what it logs `before`, its error line and
  // its answer.
  void ExpectFailed(const std::string& method, const Reply& error,
                    Lines before = {});
  // start, resumePath, finalizePath and finalizeWavOnly are refused `path`,
  // the one by its open or create, the last by the step that `wav` names.
  void ExpectRefused(const std::string& path, int errnum,
                     const std::string& wav = kPatch);
  Reply FinalizeWav(const std::string& path);

  // Both ways to recover give exactly `whole` back: finalizePath answers with
  // its figures, resumePath puts new frames behind it.
  void ExpectRecovered(const std::string& path, const Bytes& whole);

  static constexpr char kPatch[] = "Failed to patch WAV header";
  static constexpr char kStat[] = "WAV not available";

 private:
  const Lines before_;
};

// With a small disk at hand.
class DiskTest : public RealTest {
 protected:
  void SetUp() override;

  std::string OnDisk(const std::string& name) const {
    return disk_->Path(name);
  }
  SmallDisk& disk() { return *disk_; }

 private:
  std::optional<SmallDisk> disk_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_REAL_REAL_FIXTURE_H_
