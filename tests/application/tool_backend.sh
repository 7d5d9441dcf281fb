#!/bin/sh
# Stands for the Flutter tool in an application's build, which asks it, with
# the target platform and the build type, for the engine and for what becomes
# of the Dart code.
set -e
ephemeral=$PROJECT_DIR/linux/flutter/ephemeral
mkdir -p "$PROJECT_DIR/build/flutter_assets" "$PROJECT_DIR/build/lib" \
  "$PROJECT_DIR/build/native_assets/linux"
cp -R -p "$ENGINE"/. "$ephemeral"
: >"$ephemeral/icudtl.dat"
: >"$PROJECT_DIR/build/flutter_assets/AssetManifest.bin"
: >"$PROJECT_DIR/build/lib/libapp.so"
