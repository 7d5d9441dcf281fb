# shellcheck shell=bash
# What Corvane needs from the distribution, and how to get it. Sourced.

# To build the plugin and the command line, and for the demonstration:
# alsa-utils brings the speech sample, ffmpeg the independent reader (and
# ffplay, to listen).
run_packages=(
  g++ cmake ninja-build pkg-config
  libavcodec-dev libavutil-dev libglib2.0-dev
  libsndfile1-dev libasound2-dev libcli11-dev nlohmann-json3-dev
  alsa-utils ffmpeg
)

# To measure.
bench_packages=("${run_packages[@]}" libbenchmark-dev jq)

# To compare with what else records AAC or tells how long it is. The rivals come
# by themselves, for what cannot be had of them is left out.
# shellcheck disable=SC2034 # for those who source this
compare_packages=(
  "${bench_packages[@]}" python3 strace valgrind
  pulseaudio pulseaudio-utils libasound2-plugins
)
# shellcheck disable=SC2034
rival_packages=(
  faad mediainfo
  gstreamer1.0-tools gstreamer1.0-plugins-base gstreamer1.0-plugins-good
  gstreamer1.0-libav gstreamer1.0-alsa
)

# To hear: two sound servers, with ALSA's way to them.
sound_packages=(
  libasound2-plugins pulseaudio pulseaudio-utils
  pipewire pipewire-pulse wireplumber dbus-daemon
)

# To test: the second compiler with its sanitizers and checkers, GoogleTest,
# GTK, which builds against a Flutter SDK's own library and those of
# applications ask for, what makes file systems and disks for them, and
# what reads manuals.
# shellcheck disable=SC2034 # for those who source this
test_packages=(
  "${bench_packages[@]}"
  clang clang-format clang-tidy libclang-rt-dev
  libgtest-dev libgmock-dev libgtk-3-dev
  e2fsprogs xfsprogs btrfs-progs libfuse3-dev mount
  git groff-base python3 strace valgrind
  "${sound_packages[@]}"
  shellcheck systemd
)

# To make the Debian package, and to try it on a bare system.
# shellcheck disable=SC2034
package_packages=("${run_packages[@]}" dpkg-dev file debootstrap lintian)

# For the crash demonstration: what draws its picture.
# shellcheck disable=SC2034
demo_packages=("${run_packages[@]}" python3-matplotlib)

# missing_packages PACKAGE...: prints those that are not installed, one a line.
missing_packages() {
  local installed package
  installed=$(dpkg-query -W -f='${db:Status-Status} ${Package}\n' "$@" \
    2>/dev/null) || true # a package that dpkg has never heard of is no error
  for package in "$@"; do
    [[ $'\n'$installed$'\n' == *$'\n'"installed $package"$'\n'* ]] ||
      echo "$package"
  done
}

# becoming_root: leaves in `become_root` what to put before a command. Sudo may
# ask for a password, but only where someone is there to type it.
becoming_root() {
  become_root=()
  ((EUID == 0)) && return
  become_root=(sudo)
  sudo -n true 2>/dev/null && return
  command -v sudo >/dev/null && { : </dev/tty; } 2>/dev/null
}

# install_missing PACKAGE...: silent where nothing is missing. Everything goes
# to standard error, and standard input is left to whoever comes after.
install_missing() {
  local missing become_root
  if ! command -v apt-get >/dev/null; then
    echo "Without apt-get nothing is installed here; needed are (by their" \
      "Debian names): $*." >&2
    return
  fi
  mapfile -t missing < <(missing_packages "$@")
  ((${#missing[@]})) || return 0

  if ! becoming_root; then
    echo "Some packages are missing. Run this as root, then try again:" >&2
    echo "apt-get update && apt-get install --no-install-recommends" \
      "${missing[*]}" >&2
    return 1
  fi
  echo "Installing ${missing[*]}" >&2
  # The lists may be older than the archive. If new ones cannot be had, the old
  # ones may still do; if not, the installation says so.
  "${become_root[@]}" env DEBIAN_FRONTEND=noninteractive sh -c '
    apt-get -q update || true
    exec apt-get -q -y -o DPkg::Lock::Timeout=300 \
      install --no-install-recommends "$@"' sh "${missing[@]}" </dev/null >&2
}
