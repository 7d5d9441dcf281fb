#include "support/naive_path.h"

namespace corvane_test {

std::string NaiveNormalize(const std::string& path, const std::string& cwd) {
  std::string text = (path.empty() || path[0] != '/') ? cwd + "/" + path : path;
  text += "/";
  const auto replace_first = [&](const std::string& what) {
    const size_t at = text.find(what);
    if (at != std::string::npos) text.replace(at, what.size(), "/");
    return at != std::string::npos;
  };
  while (replace_first("//") || replace_first("/./")) {
  }
  for (size_t up; (up = text.find("/../")) != std::string::npos;) {
    const size_t parent = up == 0 ? 0 : text.rfind('/', up - 1);
    text.replace(parent, up + 4 - parent, "/");
  }
  if (text.size() > 1) text.pop_back();
  return text;
}

}  // namespace corvane_test
