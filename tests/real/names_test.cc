// Paths as long as they get and longer, and names that a shell, a log or a
// format string would stumble over: files, replies and log lines take them as
// they are.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <filesystem>

#include "real/real_fixture.h"

namespace corvane_test {
namespace {

constexpr size_t kLongestPath = PATH_MAX - 1;  // a NUL ends it

std::string NameOf(size_t length) {
  return std::string(length - 4, 'n') + ".aac";
}

class RealNamesTest : public RealTest {
 protected:
  // A folder, made, whose path leaves room for a '/' and `rest` more bytes.
  std::string DeepFolder(size_t rest) {
    std::string folder = Path("");
    folder.pop_back();
    const size_t length = kLongestPath - 1 - rest;
    while (length - folder.size() > NAME_MAX + 1) {
      // Never so long that no name of a single letter is left for the last.
      const size_t left = length - folder.size() - 1;
      folder += "/" + std::string(std::min<size_t>(NAME_MAX, left - 2), 'd');
      EXPECT_EQ(mkdir(folder.c_str(), 0755), 0) << folder.size();
    }
    folder += "/" + std::string(length - folder.size() - 1, 'e');
    EXPECT_EQ(mkdir(folder.c_str(), 0755), 0) << folder.size();
    return folder;
  }

  // Audio at `path` stays there when no slot's name, or path, is short enough.
  void StartIsRefusedForTheSlotsName(const std::string& path) {
    Start(path);
    ExpectFailed(
        "start",
        FileError("WRITE_FAILED",
                  "existing audio at target could not be preserved", path),
        {Error("could not preserve orphan audio " + path +
               ": File name too long")});
  }

  // Every method takes `path`; audio that is there goes to `orphan`.
  void ExpectTaken(const std::string& path, const std::string& orphan) {
    const std::vector<Bytes> chunks = ChunksFor(3);
    Start(path);
    AppendAll(chunks);
    const Reply figures = Stop();
    ExpectTranscript({StartLine(path, kRate, 1), Answer("start", NullReply()),
                      EncoderLine(kRate, 1), Answer("append", NullReply()),
                      Answer("append", NullReply()),
                      Answer("append", NullReply()),
                      ClosedLine("stop", path, 4), SealStartLine(path),
                      SealEndLine(figures), Answer("stop", figures)});
    EXPECT_THAT(figures, Sealed(path, FramesToMs(4, kRate)));
    const Bytes whole = ReadFile(path);
    ExpectRecovered(path, whole);
    const Bytes old = ReadFile(path);
    TakeTranscript();
    Start(path);
    ExpectTranscript(
        {Warning("preserved orphan audio " + path + " as " + orphan),
         StartLine(path, kRate, 1), Answer("start", NullReply())});
    EXPECT_EQ(ReadFile(orphan), old);
    Cancel();
  }
};

struct OddName {
  std::string name;
  std::string orphan;
};

// Readable in a failed test's name.
void PrintTo(const OddName& odd, std::ostream* out) {
  *out << testing::PrintToString(odd.name);
}

class RealOddNamesTest : public RealNamesTest,
                         public testing::WithParamInterface<OddName> {};

TEST_P(RealOddNamesTest, IsTakenAsItIs) {
  ExpectTaken(Path(GetParam().name), Path(GetParam().orphan));
}

INSTANTIATE_TEST_SUITE_P(
    All, RealOddNamesTest,
    testing::Values(OddName{"two\nlines.aac", "two\nlines.orphan.aac"},
                    OddName{"\n", "\n.orphan"},
                    OddName{"it's \"quoted\".aac",
                            "it's \"quoted\".orphan.aac"},
                    OddName{" blanks  around ", " blanks  around .orphan"},
                    OddName{"tab\tand\rreturn\x1b[31m.aac",
                            "tab\tand\rreturn\x1b[31m.orphan.aac"},
                    OddName{"%s%n%d.aac", "%s%n%d.orphan.aac"},
                    OddName{"back\\slash $(x) `y` *?.aac",
                            "back\\slash $(x) `y` *?.orphan.aac"},
                    OddName{"-r", "-r.orphan"}, OddName{"...", "...orphan."},
                    OddName{"Müller \u97f3\u58f0 \U0001F399.aac",
                            "Müller \u97f3\u58f0 \U0001F399.orphan.aac"},
                    // One letter in two spellings makes two names.
                    OddName{"e\u0301.aac", "e\u0301.orphan.aac"},
                    // A name is bytes: no UTF-8, and cut inside a letter.
                    OddName{"\xff\xfe\xc3.aac", "\xff\xfe\xc3.orphan.aac"}));

TEST_F(RealNamesTest, ANameOf248BytesLeavesRoomForItsOrphan) {
  const std::string stem(244, 'n');
  ExpectTaken(Path(stem + ".aac"), Path(stem + ".orphan.aac"));
}

TEST_F(RealNamesTest, OlderAudioUnderALongerNameIsNotMovedAndStays) {
  for (const size_t length : {249, NAME_MAX}) {
    const std::string path = Path(NameOf(length));
    const Bytes old = RecordedAt(path, 3);
    StartIsRefusedForTheSlotsName(path);
    EXPECT_EQ(Stop(), NothingToStop());
    ExpectRecovered(path, old);
  }
}

TEST_F(RealNamesTest, ANameOf256BytesIsRefused) {
  ExpectRefused(Path(NameOf(NAME_MAX + 1)), ENAMETOOLONG, kStat);
}

TEST_F(RealNamesTest, ThePathMayBeAsLongAsTheSystemTakes) {
  const std::string name = NameOf(NAME_MAX);
  const std::string path = DeepFolder(name.size()) + "/" + name;
  ASSERT_EQ(path.size(), kLongestPath);
  ExpectRecovered(path, RecordedAt(path, 3));
}

// The slot's path is too long, though its name is not.
TEST_F(RealNamesTest, OlderAudioAtTheLongestPathIsNotMovedAndStays) {
  const std::string path = DeepFolder(8) + "/take.aac";
  ASSERT_EQ(path.size(), kLongestPath);
  const Bytes old = RecordedAt(path, 3);
  StartIsRefusedForTheSlotsName(path);
  ExpectRecovered(path, old);
}

TEST_F(RealNamesTest, AByteMoreIsRefused) {
  const std::string path = DeepFolder(8) + "/take1.aac";
  ASSERT_EQ(path.size(), kLongestPath + 1);
  ExpectRefused(path, ENAMETOOLONG, kStat);
}

// A relative path reaches what no absolute one can name.
TEST_F(RealNamesTest, ARelativePathWorksBelowTheLongestPath) {
  const std::string below = NameOf(NAME_MAX);
  const WorkingDir deep(DeepFolder(8));
  ASSERT_EQ(mkdir(below.c_str(), 0755), 0);
  ASSERT_EQ(chdir(below.c_str()), 0);
  Start("take.aac");
  AppendAll(ChunksFor(3));
  EXPECT_THAT(FinalizePath("./take.aac"),
              Sealed("./take.aac", FramesToMs(4, kRate)));
  EXPECT_EQ(Stop(), NothingToStop()) << "both were known as one file";
  ExpectRecovered("take.aac", ReadFile("take.aac"));
}

TEST_F(RealNamesTest, AFileInAFoldersPlaceIsRefused) {
  WriteFile(Path("file"), {1});
  ExpectRefused(Path("file/take.aac"), ENOTDIR, kStat);
}

}  // namespace
}  // namespace corvane_test
