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
  local tree=$1 suite=$2 mirror
  [[ ! -e $tree/made ]] || return 0
  mirror=$(debian_mirror)
  [[ -n $mirror ]] || {
    echo "apt knows no mirror of Debian; run apt-get update" >&2
    return 1
  }
  rm -rf "$tree"
  mkdir -p "$tree"
  debootstrap --variant=minbase "$suite" "$tree" "$mirror"
  apt-config dump | grep '^Acquire::.*[Pp]roxy' \
    >"$tree/etc/apt/apt.conf.d/proxy" || true
  touch "$tree/made"
}

# in_tree FOLDER COMMAND...: with the checkout at /corvane, not to be written
# to. What is mounted goes when the command ends, and so do its children.
in_tree() {
  mkdir -p "$1/corvane"
  # shellcheck disable=SC2016 # expanded inside
  unshare --mount --pid --fork --kill-child sh -ec '
    mount --bind "$PWD" "$1/corvane"
    mount -o remount,bind,ro "$1/corvane"
    mount -t proc proc "$1/proc"
    mount --rbind /dev "$1/dev"
    cd "$1"
    tree=$PWD
    shift
    exec env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
      DEBIAN_FRONTEND=noninteractive http_proxy="${http_proxy:-}" \
      chroot "$tree" "$@"' sh "$@" </dev/null
}

install_in_tree() {
  in_tree "$1" apt-get -q update
  in_tree "$1" apt-get -q -y install --no-install-recommends "${@:2}"
}
