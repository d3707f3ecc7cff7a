# SPDX-FileCopyrightText: The libox authors
# SPDX-License-Identifier: Apache-2.0

# For scripts to source: Debian's packages for AArch64, taken apart into a folder, and programs run
# by emulation. Nothing is installed.

arm64_state=$PWD/build/arm64-apt

# apt_arm64 ARGUMENT...: apt-get of the other architecture, with lists and folders of its own.
apt_arm64() {
    mkdir -p "$arm64_state/lists/partial" "$arm64_state/archives/partial"
    touch "$arm64_state/status"
    apt-get -q -y -o APT::Architecture=arm64 -o APT::Architectures=arm64 \
        -o "Dir::State::lists=$arm64_state/lists" -o "Dir::State::status=$arm64_state/status" \
        -o "Dir::Cache=$arm64_state" -o "Dir::Cache::archives=$arm64_state/archives" "$@"
}

# take_apart ROOT PACKAGE...: packages that were downloaded.
take_apart() {
    local root=$1 package
    rm -rf "$root"
    mkdir -p "$root"
    for package in "${@:2}"; do
        dpkg-deb -x "$package" "$root"
    done
    if [ -d "$root/lib/aarch64-linux-gnu" ]; then
        cp -an "$root"/lib/aarch64-linux-gnu/. "$root/usr/lib/aarch64-linux-gnu/"
    fi
    cp -an "$root"/usr/include/aarch64-linux-gnu/. "$root/usr/include/"
    touch "$root/complete"
}

# fetch_peers ROOT: the libraries that benchmarks compare with, and all that these load.
fetch_peers() {
    [ ! -e "$1/complete" ] || return 0
    apt_arm64 update
    rm -f "$arm64_state"/archives/*.deb
    apt_arm64 install --download-only --no-install-recommends \
        libopencv-imgproc-dev libswscale-dev libyuv-dev libzimg-dev
    # The C library's headers are the cross compiler's.
    rm "$arm64_state"/archives/{libc6,linux-libc}-dev_*.deb
    take_apart "$1" "$arm64_state"/archives/*.deb
    # Debian's alternatives.
    ln -sf lapack/liblapack.so.3 blas/libblas.so.3 "$1/usr/lib/aarch64-linux-gnu/"
}

# count_emulated ROOT ARGUMENT...: ox_emulated's arguments behind its path; ROOT has the libraries.
count_emulated() {
    local plugin=$PWD/build/bench/emulator_plugin.so
    mkdir -p build/bench
    gcc -shared -fPIC -O2 -Wall -Wextra benchmarks/emulator_plugin.c -o "$plugin"
    OX_COUNT_FILE=$PWD/build/bench/count qemu-aarch64 -L "$1" -plugin "$plugin" "${@:2}"
}
