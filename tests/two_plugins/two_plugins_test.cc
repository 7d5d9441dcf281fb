// An application loads dozens of plugins into one process, each written and
// linked as its authors liked. This holds Corvane against a bad neighbour.
#include <dlfcn.h>

#include <string>

#include "engine/registrar.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"
#include "two_plugins/other_plugin.h"

namespace corvane_test {
namespace {

// The file that a symbol of the C++ runtime comes from, in this process.
std::string HomeOf(const char* symbol) {
  Dl_info info = {};
  void* address = dlsym(RTLD_DEFAULT, symbol);
  if (address == nullptr || dladdr(address, &info) == 0) return "nowhere";
  return info.dli_fname;
}

class TwoPluginsTest : public ChannelTest {
 protected:
  TwoPluginsTest() {
    g_autoptr(FlPluginRegistrar) registrar =
        corvane::registrar_new(engine().messenger());
    other_plugin_register_with_registrar(registrar);
  }

  // The other plugin's answer to one value: its text, or its error's message.
  std::string Add(const Value& value) {
    g_autoptr(FlStandardMethodCodec) codec = fl_standard_method_codec_new();
    const FlMethodCodecClass* codec_class = FL_METHOD_CODEC_GET_CLASS(codec);
    g_autoptr(GBytes) message = codec_class->encode_method_call(
        FL_METHOD_CODEC(codec), "add", value.get(), nullptr);
    std::string answer;
    engine().SendRaw("com.example.other", message, [&](GBytes* reply) {
      g_autoptr(FlMethodResponse) response =
          codec_class->decode_response(FL_METHOD_CODEC(codec), reply, nullptr);
      g_autoptr(GError) error = nullptr;
      FlValue* text = fl_method_response_get_result(response, &error);
      answer = text != nullptr ? fl_value_get_string(text) : error->message;
    });
    return answer;
  }
};

// Without this the neighbour would be a good one, and the rest proves little.
TEST_F(TwoPluginsTest, TheOthersRuntimeStandsInFrontOfTheCommonOne) {
  EXPECT_THAT(HomeOf("_ZNSt6thread4joinEv"),
              testing::EndsWith("/libother_plugin.so"));
}

TEST_F(TwoPluginsTest, BothWorkSideBySide) {
  const std::string path = Path("take.aac");
  EXPECT_EQ(Start(path), NullReply());
  EXPECT_EQ(Add(20), "1 integers, sum 20");
  for (const Bytes& chunk : Chunks(Sine(48000), 9600)) {
    EXPECT_EQ(Append(chunk), NullReply());
  }
  EXPECT_EQ(Add(22), "2 integers, sum 42");
  EXPECT_THAT(Stop(), Sealed(path, 1024));
  EXPECT_EQ(Add(0), "3 integers, sum 42");
}

TEST_F(TwoPluginsTest, EachReportsItsOwnErrors) {
  EXPECT_THAT(Add("text"), testing::HasSubstr("not an integer"));
  EXPECT_EQ(Append(Sine(10)).code, "NOT_RECORDING");
  EXPECT_EQ(Start(Path("missing/take.aac")).code, "WRITE_FAILED");
  EXPECT_THAT(Add("text"), testing::HasSubstr("not an integer"));
}

TEST_F(TwoPluginsTest, TheyGoDownTogether) {
  const std::string path = Path("take.aac");
  EXPECT_EQ(Start(path), NullReply());
  EXPECT_EQ(Add(1), "1 integers, sum 1");
  Shutdown();
  EXPECT_EQ(
      glib().Lines().back(),
      PluginMessage("closed capture on plugin dispose: " + path + " frames=0"));
}

}  // namespace
}  // namespace corvane_test
