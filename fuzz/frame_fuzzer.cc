// `Frame` against a bit-writer made from the header's table, and back through
// the scanner: a run of frames of any rate, layout and size, through one
// vector.
#include "adts/frame.h"

#include <tuple>

#include "adts/scan.h"
#include "fuzzing.h"
#include "support/adts_header.h"
#include "support/memory_file.h"
#include "support/naive_scan.h"

namespace corvane_fuzz {
namespace {

constexpr size_t kMostPayload = 8184;
constexpr size_t kMostFrames = 40;

// The stream that the frames so far make, and what a scan must find in it.
struct Stream {
  Bytes bytes;
  int64_t frames = 0;
  int last_rate = 0;
  bool readable = true;  // a reader refuses a frame without payload
};

adts::StreamConfig ConfigFrom(Input* input) {
  const int first = input->Byte();
  return {1 + first % 4, input->Byte() % 13, 1 + first / 4 % 6};
}

// A size up to a little more than a frame can hold, filled with a short pattern
// over and over.
Bytes PayloadFrom(Input* input) {
  const size_t size = input->Word() % (kMostPayload + 32);
  const Bytes pattern = input->Take(input->Byte() % 16);
  Bytes payload;
  while (payload.size() < size) {
    payload.push_back(
        pattern.empty() ? 0 : pattern[payload.size() % pattern.size()]);
  }
  return payload;
}

Bytes ExpectedFrame(const adts::StreamConfig& config, const Bytes& payload) {
  corvane_test::HeaderFields fields;
  fields.profile = static_cast<unsigned>(config.object_type - 1);
  fields.frequency_index = static_cast<unsigned>(config.frequency_index);
  fields.channel_configuration = static_cast<unsigned>(config.channel_config);
  fields.frame_length = static_cast<unsigned>(payload.size() + 7);
  Bytes frame = HeaderBytes(fields);
  frame.insert(frame.end(), payload.begin(), payload.end());
  return frame;
}

void AddFrame(const adts::StreamConfig& config, const Bytes& payload,
              Bytes* frame, Stream* stream) {
  const Bytes before = *frame;
  const bool framed =
      adts::Frame(config, payload.data(), payload.size(), frame);
  Require(framed == (payload.size() <= kMostPayload),
          "wrongly taken or refused");
  if (!framed) {
    Require(*frame == before, "a refused payload changed the vector");
    return;
  }
  Require(*frame == ExpectedFrame(config, payload), "not the table's frame");
  stream->bytes.insert(stream->bytes.end(), frame->begin(), frame->end());
  stream->frames += 1;
  stream->last_rate = config.SampleRate();
  stream->readable = stream->readable && !payload.empty();
}

void ReadBack(const Stream& stream) {
  static corvane_test::MemoryFile file;
  file.Set(stream.bytes);
  adts::Scan scan{};
  Require(adts::ScanFile(file.fd(), &scan) == 0,
          "the frames cannot be scanned");
  Require(scan == corvane_test::NaiveScan(stream.bytes), "not the naive scan");
  if (!stream.readable) return;
  const auto size = static_cast<int64_t>(stream.bytes.size());
  Require(
      scan == adts::Scan{size, size, stream.frames * 1024, stream.last_rate, 0},
      "what was framed doesn't scan as it was framed");
}

}  // namespace
}  // namespace corvane_fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace corvane_fuzz;
  Input input(data, size);
  Bytes frame;
  Stream stream;
  for (size_t i = 0; i < kMostFrames && !input.AtEnd(); ++i) {
    const adts::StreamConfig config = ConfigFrom(&input);
    AddFrame(config, PayloadFrom(&input), &frame, &stream);
  }
  ReadBack(stream);
  return 0;
}
