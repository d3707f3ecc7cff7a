// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "peer_target.h"

#include "peers.h"

#ifdef OX_PEER_SWSCALE
extern "C" {
#include <libavutil/cpu.h>
}
#endif

namespace ox::benchmarks {

namespace {

bool isHeld = false;

}  // namespace

void holdPeers(std::string const& target) {
    isHeld = target == "AVX2";
    if (!isHeld) {
        return;
    }
#ifdef OX_PEER_LIBYUV
    int const newer = libyuv::kCpuHasAVX512BW | libyuv::kCpuHasAVX512VL |
                      libyuv::kCpuHasAVX512VNNI | libyuv::kCpuHasAVX512VBMI |
                      libyuv::kCpuHasAVX512VBMI2 | libyuv::kCpuHasAVX512VBITALG |
                      libyuv::kCpuHasAVX512VPOPCNTDQ;
    libyuv::MaskCpuFlags(~newer);
#endif
#ifdef OX_PEER_SWSCALE
    constexpr unsigned wide = AV_CPU_FLAG_AVX512 | AV_CPU_FLAG_AVX512ICL;
    av_force_cpu_flags(static_cast<int>(static_cast<unsigned>(av_get_cpu_flags()) & ~wide));
#endif
}

bool arePeersHeld() {
    return isHeld;
}

}  // namespace ox::benchmarks
