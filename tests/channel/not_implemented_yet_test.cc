// Methods whose arguments are checked already and whose work is still to come.
#include <gmock/gmock.h>

#include "support/channel_fixture.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;
using NotImplementedYetTest = ChannelTest;

TEST_F(NotImplementedYetTest, WellFormedCallsAreAnsweredAtOnce) {
  const WorkingDir here(Path(""));
  const Value capture = CaptureArgs("rec/a.aac", 48000, 1);
  const Value wav = Value::Map(
      {{"wavPath", "a.wav"}, {"sampleRate", 44000}, {"channels", 8}});
  Post("flush");
  Post("resumePath", capture);
  Post("finalizePath", capture.With("outputPath", "./rec//a.aac"));
  Post("finalizeWavOnly", wav);
  AwaitReplies();
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(Answer("resumePath", NotImplemented()),
                          Answer("finalizePath", NotImplemented()),
                          Answer("finalizeWavOnly", NotImplemented()),
                          Answer("flush", NullReply())));
  EXPECT_THAT(ListDir(Path("")), ElementsAre());
}

}  // namespace
}  // namespace corvane_test
