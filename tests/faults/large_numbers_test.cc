// Numbers that no rule limits, up to the ends of 64 bits: what Dart sends, and
// what the system says of a file.
#include <sys/stat.h>

#include "faults_fixture.h"

namespace corvane_test {
namespace {

const int64_t k2To31 = int64_t{1} << 31;

// Bit rates around each width that a smaller type would have.
const std::vector<int64_t> kBitRates = {
    1,          k2To31 - 1,         k2To31,        2 * k2To31 - 1,
    2 * k2To31, 2 * k2To31 + 64000, INT64_MAX - 1, INT64_MAX};

class LargeBitRateTest : public FaultsTest,
                         public testing::WithParamInterface<int64_t> {
 protected:
  // What the codec is told; it then gets one that it can work with.
  void ExpectTheCodecIsTold(int64_t bit_rate) {
    int64_t told = 0;
    Fault look(On("avcodec_open2").Nth(1).Before([&](PluginCall& call) {
      told = std::exchange(call.context->bit_rate, 64000);
    }));
    EXPECT_EQ(Append(Sine(1)), NullReply());
    EXPECT_EQ(told, bit_rate);
    EXPECT_EQ(LogLines().back(), EncoderLine(48000, 1, bit_rate));
  }

  Value Args(const std::string& path) {
    return CaptureArgs(path, 48000, 1).With("bitRate", GetParam());
  }
};

TEST_P(LargeBitRateTest, ReachesTheCodecOfANewCaptureUnchanged) {
  const std::string path = Path("take.aac");
  EXPECT_EQ(Call("start", Args(path)), NullReply());
  EXPECT_EQ(LogLines(), (Lines{StartLine(path, 48000, 1, GetParam())}));
  ExpectTheCodecIsTold(GetParam());
}

TEST_P(LargeBitRateTest, ReachesTheCodecOfAResumedCaptureUnchanged) {
  const std::string path = Path("take.aac");
  WriteFile(path, {});
  EXPECT_EQ(Call("resumePath", Args(path)), NullReply());
  ExpectTheCodecIsTold(GetParam());
}

TEST_P(LargeBitRateTest, OutlivesARestartOfTheCodec) {
  EXPECT_EQ(Call("start", Args(Path("take.aac"))), NullReply());
  Fault fault(On("avcodec_alloc_context3").Nth(1).Fail(ENOMEM));
  ExpectTheCodecIsTold(GetParam());
}

TEST_P(LargeBitRateTest, IsTakenForAFinalizedCapture) {
  const std::string path = Path("take.aac");
  WriteFile(path, Undisturbed(Sine(kFrameSamples)));
  EXPECT_EQ(Call("finalizePath", Args(path).With("outputPath", path)).kind,
            Reply::Kind::kFigures);
}

INSTANTIATE_TEST_SUITE_P(Every, LargeBitRateTest, testing::ValuesIn(kBitRates));

// The size of a file, as fstat and stat tell it.
class LargeSizeTest : public FaultsTest {
 protected:
  // The nth fstat says `size`.
  static Rule SizeIs(int nth, int64_t size) {
    return On("fstat").Nth(nth).After(
        [size](PluginCall& call) { call.status->st_size = size; });
  }

  const Bytes whole_ = Undisturbed(Sine(3 * kFrameSamples));
  const std::string path_ = Path("take.aac");
};

const std::vector<int64_t> kSizes = {k2To31 - 1, k2To31, 2 * k2To31 + 5,
                                     INT64_MAX};

TEST_F(LargeSizeTest, OfASealedCaptureIsAnsweredAndLogged) {
  WriteFile(path_, whole_);
  for (const int64_t size : kSizes) {
    Fault last_look(SizeIs(3, size));
    const Reply figures = Figures(path_, FramesToMs(4, 48000), size);
    EXPECT_EQ(FinalizePath(path_), figures);
    EXPECT_EQ(LogLines().back(), SealEndLine(figures, 0, "finalizePath"));
  }
}

TEST_F(LargeSizeTest, OfACaptureWithoutAFrameIsNamed) {
  WriteFile(path_, {});
  for (const int64_t size : kSizes) {
    Fault last_look(SizeIs(3, size));
    EXPECT_EQ(FinalizePath(path_),
              FileError("VERIFY_FAILED",
                        "capture holds no complete AAC frame (" +
                            std::to_string(size) + " bytes)",
                        path_));
  }
}

TEST_F(LargeSizeTest, OfATornTailIsNamedAndTheCutIsInItsPlace) {
  const auto whole = static_cast<int64_t>(whole_.size());
  for (const int64_t size : kSizes) {
    WriteFile(path_, whole_);
    TakeTranscript();
    Fault second_look(SizeIs(2, size));
    CallLog log;
    EXPECT_EQ(FinalizePath(path_).kind, Reply::Kind::kFigures);
    EXPECT_EQ(LogLines().at(1),
              DroppingLine(static_cast<size_t>(size - whole), path_));
    ASSERT_EQ(log.Of("ftruncate").size(), 1U);
    EXPECT_EQ(log.Of("ftruncate")[0].size, whole);
  }
}

// The comparison has signs: what is smaller than nothing is not torn.
TEST_F(LargeSizeTest, BelowZeroIsNoTornTail) {
  WriteFile(path_, whole_);
  for (const int64_t size : {int64_t{-1}, INT64_MIN}) {
    Fault second_look(SizeIs(2, size));
    CallLog log;
    EXPECT_EQ(FinalizePath(path_).kind, Reply::Kind::kFigures);
    EXPECT_EQ(log.Of("ftruncate").size(), 0U);
  }
  EXPECT_EQ(ReadFile(path_), whole_);
}

// A non-empty entry is one whose size is not zero, whatever else it is.
TEST_F(LargeSizeTest, AnyButZeroMakesAnEntryWorthKeeping) {
  for (const int64_t size :
       {int64_t{-1}, INT64_MIN, 2 * k2To31, 256 * k2To31, INT64_MAX}) {
    WriteFile(path_, {1});
    Fault look(On("stat").Nth(1).After(
        [size](PluginCall& call) { call.status->st_size = size; }));
    EXPECT_EQ(Start(path_), NullReply());
    EXPECT_EQ(Cancel(), NullReply());
  }
  EXPECT_EQ(ReadFile(Path("take.orphan4.aac")), Bytes{1}) << "the fifth";
}

class LargeWavTest : public FaultsTest {
 protected:
  // A repair of a file that stat says has `size` bytes.
  Reply RepairAs(int64_t size) {
    WriteFile(path_, Bytes(50, 7));
    TakeTranscript();
    Fault look(On("stat").Nth(1).After(
        [size](PluginCall& call) { call.status->st_size = size; }));
    return Call("finalizeWavOnly", Value::Map({{"wavPath", path_},
                                               {"sampleRate", 48000},
                                               {"channels", 1}}));
  }

  std::string PatchedLine(const std::string& data_bytes) const {
    return Info("finalizeWavOnly patched " + path_ +
                " dataBytes=" + data_bytes);
  }

  std::string CappedLine(const std::string& data_bytes) const {
    return Warning("WAV " + path_ + " holds " + data_bytes +
                   " data bytes; header capped at 4294967259");
  }

  // The four bytes of a size in the header, RIFF's or that of the data.
  Bytes SizeAt(size_t offset) const {
    return Slice(ReadFile(path_), offset, 4);
  }

  const std::string path_ = Path("take.wav");
};

TEST_F(LargeWavTest, ASizeBelowZeroHoldsNoSound) {
  for (const int64_t size : {int64_t{-1}, int64_t{-44}, int64_t{-45},
                             -2 * k2To31, -2 * k2To31 + 100, INT64_MIN}) {
    SCOPED_TRACE(size);
    EXPECT_EQ(RepairAs(size), NullReply());
    EXPECT_EQ(LogLines(), (Lines{PatchedLine("0")}));
    EXPECT_EQ(SizeAt(4), (Bytes{36, 0, 0, 0}));
    EXPECT_EQ(SizeAt(40), (Bytes{0, 0, 0, 0}));
  }
}

TEST_F(LargeWavTest, TheLargestSizesAreNamedInFullAndCapped) {
  const std::vector<std::pair<int64_t, std::string>> sizes = {
      {2 * k2To31 + 44, "4294967296"},
      {4 * k2To31 + 44, "8589934592"},
      {INT64_MAX, "9223372036854775763"}};
  for (const auto& [size, data_bytes] : sizes) {
    EXPECT_EQ(RepairAs(size), NullReply());
    EXPECT_EQ(LogLines(),
              (Lines{CappedLine(data_bytes), PatchedLine(data_bytes)}));
    EXPECT_EQ(SizeAt(4), (Bytes{0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(SizeAt(40), (Bytes{0xDB, 0xFF, 0xFF, 0xFF}));
  }
}

TEST_F(LargeWavTest, ASizeWithTheHighestOf32BitsIsNotCapped) {
  EXPECT_EQ(RepairAs(k2To31 + 44), NullReply());
  EXPECT_EQ(LogLines(), (Lines{PatchedLine("2147483648")}));
  EXPECT_EQ(SizeAt(40), (Bytes{0, 0, 0, 0x80}));
}

}  // namespace
}  // namespace corvane_test
