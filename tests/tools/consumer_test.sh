#!/bin/sh
# Installs the built Zestra into a fresh prefix below the build folder, then
# builds the consumer project against that prefix, once with CMake
# (find_package(Zestra): a C++ program on the shared library and a C program
# on the static one) and once with pkg-config (a C program). Every program,
# and the installed tool, must print the sample page's article and nothing
# of its navigation.
#
# Usage: consumer_test.sh BUILD_DIR SOURCE_DIR LIBDIR CMAKE PKG_CONFIG CC CXX FLAGS
# FLAGS are compiler and linker flags for the consumer (the sanitizer flags
# of an instrumented build), possibly empty.
set -eu

build=$1 source=$2 libdir=$3 cmake=$4 pkg_config=$5 cc=$6 cxx=$7 flags=$8
work=$build/tests/tools/consumer-work
prefix=$work/prefix
sample=$source/samples/article.html
title="The Lighthouse Keepers of Skerry Point - Coastal Chronicle"

rm -rf "$work"
mkdir -p "$work"
"$cmake" --install "$build" --prefix "$prefix" >"$work/install.log"

"$prefix/bin/zestra" extract "$sample" >"$work/expected.txt"
grep -q "the light at Skerry Point was tended by hand" "$work/expected.txt"
if grep -q -e "Subscribe" -e "Shipwrecks" -e "Copyright" "$work/expected.txt"; then
  echo "the installed tool printed navigation" >&2
  exit 1
fi

# Checks that `$1` printed the title, the charset and the tool's text.
check() {
  "$@" "$sample" >"$work/got.txt"
  if [ "$(sed -n 1p "$work/got.txt")" != "$title" ] || [ "$(sed -n 2p "$work/got.txt")" != "utf-8" ]; then
    echo "$1: wrong title or charset" >&2
    exit 1
  fi
  tail -n +3 "$work/got.txt" >"$work/got-text.txt"
  if ! cmp -s "$work/got-text.txt" "$work/expected.txt"; then
    echo "$1: text differs from the tool's" >&2
    exit 1
  fi
  echo "ok: $1"
}

"$cmake" -S "$source/tests/tools/consumer" -B "$work/cmake-build" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" \
  -DCMAKE_EXE_LINKER_FLAGS="$flags" >"$work/cmake-configure.log"
"$cmake" --build "$work/cmake-build" >"$work/cmake-build.log"
check "$work/cmake-build/consumer_cpp"
check "$work/cmake-build/consumer_c_static"

export PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"
# Word splitting of the pkg-config output is intended.
# shellcheck disable=SC2046
"$cc" $flags -o "$work/consumer_pkg_config" "$source/tests/tools/consumer/consumer.c" \
  $("$pkg_config" --cflags --libs zestra) -Wl,-rpath,"$("$pkg_config" --variable=libdir zestra)"
check "$work/consumer_pkg_config"
