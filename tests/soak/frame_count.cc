#include "soak/frame_count.h"

#include <algorithm>
#include <array>
#include <fstream>

namespace corvane_test {
namespace {

constexpr int kHeaderSize = 7;

using Header = std::array<unsigned char, kHeaderSize>;

bool BeginsFrame(const Header& header, int channels) {
  return header[0] == 0xFF && header[1] == 0xF1 &&
         ((header[2] & 1) << 2 | header[3] >> 6) == channels;
}

int FrameLength(const Header& header) {
  return (header[3] & 3) << 11 | header[4] << 3 | header[5] >> 5;
}

}  // namespace

FrameCount CountFrames(const std::string& path, int channels) {
  std::ifstream file(path, std::ios::binary);
  FrameCount count;
  Header first = {};
  Header header = {};
  while (file.read(reinterpret_cast<char*>(header.data()), kHeaderSize)) {
    if (count.frames == 0) first = header;
    const int payload = FrameLength(header) - kHeaderSize;
    const bool same_format =
        std::equal(header.begin(), header.begin() + 3, first.begin());
    if (!BeginsFrame(header, channels) || !same_format || payload <= 0) break;
    file.ignore(payload);
    if (file.gcount() < payload) break;
    ++count.frames;
    count.bytes += kHeaderSize + payload;
  }
  return count;
}

}  // namespace corvane_test
