// "finalizeWavOnly" with each of its calls made to fail.
#include <gmock/gmock.h>

#include "faults_fixture.h"

namespace corvane_test {
namespace {

using testing::Each;
using testing::Field;

constexpr size_t kHeaderSize = 44;

class WavFaultsTest : public FaultsTest {
 protected:
  WavFaultsTest() { WriteFile(path_, before_); }

  Reply Repair() {
    return Call("finalizeWavOnly", Value::Map({{"wavPath", path_},
                                               {"sampleRate", 48000},
                                               {"channels", 2}}));
  }

  // The call fails with `error`, and only the usual two lines come of it.
  void ExpectRepairFails(const Reply& error) {
    EXPECT_EQ(Repair(), error);
    EXPECT_EQ(TakeTranscript(), (Lines{Failed("finalizeWavOnly", error),
                                       Answer("finalizeWavOnly", error)}));
    EXPECT_EQ(HeldNow(), Held());
    ExpectSoundUntouched();
  }

  void ExpectRepaired(int data_bytes) {
    EXPECT_EQ(Repair(), NullReply());
    EXPECT_EQ(TakeTranscript(),
              (Lines{Info("finalizeWavOnly patched " + path_ +
                          " dataBytes=" + std::to_string(data_bytes)),
                     Answer("finalizeWavOnly", NullReply())}));
    EXPECT_EQ(HeldNow(), Held());
    ExpectSoundUntouched();
  }

  void ExpectSoundUntouched() const {
    EXPECT_EQ(Slice(ReadFile(path_), kHeaderSize), sound_);
  }

  // The sizes that the header now claims, RIFF and data.
  std::vector<uint32_t> Sizes() const {
    const Bytes file = ReadFile(path_);
    std::vector<uint32_t> sizes;
    for (const size_t at : {size_t{4}, size_t{40}}) {
      sizes.push_back(file[at] | file[at + 1] << 8 | file[at + 2] << 16 |
                      static_cast<uint32_t>(file[at + 3]) << 24);
    }
    return sizes;
  }

  Reply NotAvailable(const std::string& code, int errnum) const {
    return ErrnoError(code, "WAV not available", path_, errnum);
  }

  Reply NotPatched(int errnum) const {
    return ErrnoError("FINALIZE_FAILED", "Failed to patch WAV header", path_,
                      errnum);
  }

  const std::string path_ = Path("take.wav");
  const Bytes sound_ = Noise(500);  // 1000 bytes
  const Bytes before_ = Concat(Bytes(kHeaderSize, 0xAA), sound_);
};

const Lines kWholeRepair = {"stat",   "fopen", "fwrite",
                            "fflush", "fsync", "fclose"};

TEST_F(WavFaultsTest, CallsOfARepairAreTheseAndAllMadeByTheWorker) {
  CallLog log;
  ExpectRepaired(1000);
  EXPECT_EQ(log.Names(), kWholeRepair);
  EXPECT_EQ(log.Of("fwrite")[0].size, static_cast<int64_t>(kHeaderSize));
  EXPECT_THAT(log.calls(), Each(Field(&PluginCall::path, path_)));
  const pid_t worker = log.calls()[0].thread;
  EXPECT_NE(worker, gettid());
  EXPECT_THAT(log.calls(), Each(Field(&PluginCall::thread, worker)));
}

TEST_F(WavFaultsTest, FileThatIsNotThereIsMissing) {
  CallLog log;
  Fault fault(On("stat").Fail(ENOENT));
  ExpectRepairFails(NotAvailable("CAPTURE_MISSING", ENOENT));
  EXPECT_EQ(log.Names(), (Lines{"stat"}));
}

class WavErrnoTest : public WavFaultsTest,
                     public testing::WithParamInterface<int> {};

TEST_P(WavErrnoTest, FileThatCannotBeLookedAtIsNotCalledMissing) {
  CallLog log;
  Fault fault(On("stat").Fail(GetParam()));
  ExpectRepairFails(NotAvailable("FINALIZE_FAILED", GetParam()));
  EXPECT_EQ(log.Names(), (Lines{"stat"}));
  EXPECT_EQ(ReadFile(path_), before_);
}

TEST_P(WavErrnoTest, FileThatDoesNotOpenIsReported) {
  CallLog log;
  Fault fault(On("fopen").Fail(GetParam()));
  ExpectRepairFails(NotPatched(GetParam()));
  EXPECT_EQ(log.Names(), (Lines{"stat", "fopen"}));
  EXPECT_EQ(ReadFile(path_), before_);
}

// From here on the stream is open: whatever fails, it is flushed, synced and
// closed.
TEST_P(WavErrnoTest, FailedWriteIsReported) {
  CallLog log;
  Fault fault(On("fwrite").Fail(GetParam()));
  ExpectRepairFails(NotPatched(GetParam()));
  EXPECT_EQ(log.Names(), kWholeRepair);
  EXPECT_EQ(ReadFile(path_), before_);
}

TEST_P(WavErrnoTest, EachLaterFailureIsReportedAndTheRestStillDone) {
  for (const char* function : {"fflush", "fsync", "fclose"}) {
    SCOPED_TRACE(function);
    CallLog log;
    Fault fault(On(function).Fail(GetParam()));
    ExpectRepairFails(NotPatched(GetParam()));
    EXPECT_EQ(log.Names(), kWholeRepair);
  }
}

TEST_P(WavErrnoTest, FirstFailureIsTheOneReported) {
  const Lines steps = {"fwrite", "fflush", "fsync", "fclose"};
  for (size_t first = 0; first + 1 < steps.size(); ++first) {
    for (size_t later = first + 1; later < steps.size(); ++later) {
      SCOPED_TRACE(steps[first] + " before " + steps[later]);
      Fault fault(On(steps[first]).Fail(GetParam()));
      Fault hidden(On(steps[later]).Fail(EBADF));
      ExpectRepairFails(NotPatched(GetParam()));
    }
  }
}

// The repair was made in the meantime; only nobody can promise that it lasts.
TEST_P(WavErrnoTest, HeaderIsWrittenAlthoughItsSyncFailed) {
  Fault fault(On("fsync").Fail(GetParam()));
  ExpectRepairFails(NotPatched(GetParam()));
  EXPECT_EQ(Sizes(), (std::vector<uint32_t>{1036, 1000}));
}

INSTANTIATE_TEST_SUITE_P(Every, WavErrnoTest,
                         testing::Values(EIO, ENOSPC, EACCES, EMFILE, EROFS));

// ENOENT is nothing special here: the file was there a moment ago.
TEST_F(WavFaultsTest, FileThatVanishedBeforeItOpensCannotBePatched) {
  Fault fault(On("fopen").Fail(ENOENT));
  ExpectRepairFails(NotPatched(ENOENT));
}

// Calls that fail without saying why. Each has an outcome of its own.

TEST_F(WavFaultsTest, LookWithoutAnErrnoMeansThatNoSoundIsKnownOf) {
  Fault fault(On("stat").Fail(0));
  ExpectRepaired(0);
  EXPECT_EQ(Sizes(), (std::vector<uint32_t>{36, 0}));
}

TEST_F(WavFaultsTest, OpeningWithoutAnErrnoPassesForSuccess) {
  CallLog log;
  Fault fault(On("fopen").Fail(0));
  ExpectRepaired(1000);
  EXPECT_EQ(log.Names(), (Lines{"stat", "fopen"}));
  EXPECT_EQ(ReadFile(path_), before_) << "though nothing is written";
}

TEST_F(WavFaultsTest, AnyOtherStepWithoutAnErrnoIsAnInputOutputError) {
  for (const char* function : {"fwrite", "fflush", "fsync", "fclose"}) {
    SCOPED_TRACE(function);
    Fault fault(On(function).Fail(0));
    ExpectRepairFails(NotPatched(EIO));
  }
}

// The look leaves errno at 0, and a short write doesn't touch it.
TEST_F(WavFaultsTest, HeaderThatIsWrittenByHalfIsAFailure) {
  for (const int64_t bytes : {0, 1, 43}) {
    SCOPED_TRACE(bytes);
    Fault look(On("stat").Fail(0));
    Fault short_write(On("fwrite").Accept(bytes));
    ExpectRepairFails(NotPatched(EIO));
  }
}

TEST_F(WavFaultsTest, FailureWithoutAnErrnoHidesALaterOne) {
  Fault first(On("fflush").Fail(0));
  Fault later(On("fclose").Fail(ENOSPC));
  ExpectRepairFails(NotPatched(EIO));
}

}  // namespace
}  // namespace corvane_test
