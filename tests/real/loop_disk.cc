#include "real/loop_disk.h"

#include <sys/mount.h>

#include <cerrno>
#include <utility>

#include "host/child_process.h"

namespace corvane_test {
namespace {

// Runs a shell script on two paths; what it complains of, empty when it worked.
std::string Run(const std::string& script, const std::string& at,
                const std::string& image) {
  ChildResult run =
      Child({"/bin/sh", "-ec", script, "sh", at, image}, ChildSetup()).Wait();
  if (run.status == 0) return "";
  return "no loop device: " + std::move(run.err);
}

// mount(8) looks for a free loop device, and tries again when it was taken.
constexpr char kMount[] = "mount -o loop \"$2\" \"$1\"";
constexpr char kMake[] =
    "PATH=$PATH:/usr/sbin:/sbin; mkdir \"$1\"; truncate -s 2M \"$2\"; "
    "mkfs.ext4 -q -F -b 1024 \"$2\";";

}  // namespace

LoopDisk::LoopDisk(const std::string& at, const std::string& image)
    : at_(at),
      image_(image),
      refusal_(Run(kMake + std::string(kMount), at, image)) {}

LoopDisk::~LoopDisk() {
  if (refusal_.empty()) umount2(at_.c_str(), MNT_DETACH);
}

int LoopDisk::GiveUp() const {
  const int result = mount(nullptr, at_.c_str(), nullptr, MS_REMOUNT, "abort");
  return result == 0 ? 0 : errno;
}

void LoopDisk::MountAgain() {
  refusal_ = Run("umount \"$1\"; " + std::string(kMount), at_, image_);
}

}  // namespace corvane_test
