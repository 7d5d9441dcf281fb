# shellcheck shell=bash
# A Debian system in a folder, to try there what this one is too old or too
# full for. Sourced; needs root and debootstrap.

# debian_mirror: where this system gets its own packages from, as apt knows.
debian_mirror() {
  # shellcheck disable=SC2016 # apt's own variables
  apt-get indextargets --format '$(REPO_URI)' \
    'Identifier: Packages' 'Label: Debian' 'Component: main' | sed -n 1p
}

# make_tree FOLDER SUITE: the smallest system that can install packages, from
# this system's mirror and by its way to it. An earlier one is kept.
make_tree() {
  local tree=$1 suite=$2 mirror scripts=/usr/share/debootstrap/scripts script
  [[ ! -e $tree/made ]] || return 0
  mirror=$(debian_mirror)
  [[ -n $mirror ]] || {
    echo "apt knows no mirror of Debian; run apt-get update" >&2
    return 1
  }
  rm -rf "$tree"
  mkdir -p "$tree"
  script=$scripts/$suite
  [[ -e $script ]] || script=$scripts/sid # of a release that came later
  debootstrap --variant=minbase "$suite" "$tree" "$mirror" "$script"
  apt-config dump | grep '^Acquire::.*[Pp]roxy' \
    >"$tree/etc/apt/apt.conf.d/proxy" || true
  touch "$tree/made"
}

# in_tree FOLDER COMMAND...: with the checkout at /corvane, not to be written
# to, and the kernel's settings neither. What is mounted goes when the command
# ends, and so do its children.
in_tree() {
  enter_tree "$1" --mount --pid -- "${@:2}"
}

# in_emulating_tree FOLDER COMMAND...: as in_tree, and whatever is for 64-bit
# ARM is run by the tree's emulator. The kernel is told so for a user namespace
# alone, and this system stays as it is; that takes Linux 6.7 or later.
in_emulating_tree() {
  # shellcheck disable=SC2016 # expanded inside
  enter_tree "$1" --mount --pid --user --map-root-user -- sh -ec '
    formats=/proc/sys/fs/binfmt_misc
    mount -t binfmt_misc none $formats || {
      echo "Programs of another architecture need Linux 6.7 or later." >&2
      exit 1
    }
    elf="\x7fELF\x02\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00"
    printf "%s" ":arm64:M::$elf\x02\x00\xb7\x00:\
\xff\xff\xff\xff\xff\xff\xff\x00\xff\xff\xff\xff\xff\xff\xff\xff\
\xfe\xff\xff\xff:/usr/bin/qemu-aarch64:FP" >$formats/register
    exec "$@"' sh "${@:2}"
}

# enter_tree FOLDER NAMESPACE... -- COMMAND...
enter_tree() {
  local tree=$1 namespaces=()
  shift
  while [[ $1 != -- ]]; do
    namespaces+=("$1")
    shift
  done
  shift
  mkdir -p "$tree/corvane"
  # shellcheck disable=SC2016 # expanded inside
  # A mount of its own, or nobody inside could have mounts that nobody else sees.
  unshare "${namespaces[@]}" --fork --kill-child sh -ec '
    mount --bind "$1" "$1"
    mount --bind "$PWD" "$1/corvane"
    mount -o remount,bind,ro "$1/corvane"
    mount -t proc proc "$1/proc"
    mount --bind "$1/proc/sys" "$1/proc/sys"
    mount -o remount,bind,ro "$1/proc/sys"
    mount --rbind /dev "$1/dev"
    cd "$1"
    tree=$PWD
    shift
    exec env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
      DEBIAN_FRONTEND=noninteractive http_proxy="${http_proxy:-}" \
      chroot "$tree" "$@"' sh "$tree" "$@" </dev/null
}

# prepare_for ARCH FOLDER: libraries of that architecture may be installed
# beside the tree's own.
prepare_for() {
  [[ $1 == amd64 ]] || in_tree "$2" dpkg --add-architecture "$1"
}

# packages_for ARCH PACKAGE...: prints, one a line, what takes their place when
# Corvane is compiled for that: its libraries and its ffmpeg, a cross compiler, and an
# emulator. All else is run on this machine.
packages_for() {
  local arch=$1 package
  shift
  if [[ $arch == amd64 ]]; then
    printf '%s\n' "$@"
    return
  fi
  for package; do
    case $package in
      g++) printf '%s\n' g++-aarch64-linux-gnu binutils qemu-user ;;
      libcli11-dev) echo "$package" ;; # headers alone, of no architecture
      lib*-dev | libasound2-plugins | ffmpeg) echo "$package:$arch" ;;
      *) echo "$package" ;;
    esac
  done
}

# install_in_tree FOLDER PACKAGE...: a mirror that stands still is good enough;
# what it gives is signed all the same.
install_in_tree() {
  in_tree "$1" apt-get -q -o Acquire::Check-Valid-Until=false update
  in_tree "$1" apt-get -q -y install --no-install-recommends "${@:2}"
}
