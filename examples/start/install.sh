#!/usr/bin/env bash
# SPDX-FileCopyrightText: The libox authors
# SPDX-License-Identifier: Apache-2.0

# The commands of docs/start.md, from the library's folder on; script/check-install runs them in a home
# of their own, over the release build that is there.
set -euo pipefail
root=$PWD
# [install]
cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DOX_BUILD_TESTS=OFF
cmake --build build/release -j "$(nproc)"                # two to three minutes on two cores
cmake --install build/release --prefix "$HOME/ox"
# [install]

mkdir -p "$HOME/start"
cd "$HOME/start"
cp "$root/examples/start/main.cpp" "$root/examples/start/CMakeLists.txt" .
# [build]
cmake -S . -B build -DCMAKE_PREFIX_PATH="$HOME/ox"
cmake --build build
build/start                                              # box 600,120 to 680,240
# [build]

# [pkg-config]
export PKG_CONFIG_PATH="$HOME/ox/lib/pkgconfig"
g++ main.cpp -o app $(pkg-config --cflags --libs ox-cv) -Wl,-rpath,"$HOME/ox/lib"
# [pkg-config]
./app

cp "$root/examples/camera_to_network_c/main.c" app.c
# [c]
export PKG_CONFIG_PATH="$HOME/ox/lib/pkgconfig"
gcc app.c -o app $(pkg-config --cflags --libs ox-cv) -Wl,-rpath,"$HOME/ox/lib"
# [c]
./app

cd "$root"
# [example]
cmake -S examples/align_face -B build/align_face -DCMAKE_PREFIX_PATH="$HOME/ox"
cmake --build build/align_face
build/align_face/align_face
# [example]

# [path]
export PATH="$HOME/ox/bin:$PATH"
oxcv convert examples/data/rocket.jpg small.png --size 320x
# [path]
rm small.png
