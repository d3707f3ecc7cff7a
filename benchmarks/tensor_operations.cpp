// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <array>

#include "operation.h"
#include "ox_cv/ox_cv_backend_simd.h"
#include "peers.h"
#include "pictures.h"
#include "roads.h"

namespace ox::benchmarks {

namespace {

constexpr float perByte = 1.0F / 255.0F;

/// A centred square of a camera frame as planes of floats from 0 to 1, by way of packed bytes.
Operation cameraToTensor(Size from, int side) {
    Picture const src = randomPicture(FRAME_NV12, from);
    Picture const bgr = blankPicture(FRAME_BGR24, {side, side});
    Picture const dst = blankPicture(FRAME_BGR_32F_PLANAR, {side, side});
    Rect const crop{(from.width - from.height) / 4 * 2, 0, from.height, from.height};
    Operation operation{
        "NV12 to float planes of " + std::to_string(side) + "x" + std::to_string(side),
        Family::Tensor,
        pixelBytes(*src) + pixelBytes(*dst),
        roadsOf(src, dst,
                [=](ICvBackend& backend, Frame const& camera, Frame& tensor) {
                    backend.convert(camera, *bgr, crop);
                    backend.colorCvt(*bgr, tensor, Rect{});
                    backend.mul(tensor, perByte, Rect{});
                }),
        {}};
#ifdef OX_PEER_OPENCV
    auto const small = blankPicture(FRAME_NV12, {side, side});
    operation.peers.push_back(
        {"opencv", [=] {
             // Both planes are cropped and resized, then converted as one picture.
             for (int i = 0; i < 2; ++i) {
                 FramePlane const& plane = src->layout().plane[i];
                 cv::Mat const whole(plane.height, plane.width, CV_MAKETYPE(CV_8U, plane.channels),
                                     src->planeData(i), static_cast<std::size_t>(plane.stride));
                 int const half = i + 1;
                 FramePlane const& target = small->layout().plane[i];
                 cv::Mat to(target.height, target.width, whole.type(), small->planeData(i),
                            static_cast<std::size_t>(target.stride));
                 cv::resize(
                     whole(cv::Rect(crop.x / half, 0, crop.width / half, crop.height / half)), to,
                     to.size(), 0, 0, cv::INTER_LINEAR);
             }
             cv::Mat packed = matOf(*bgr, CV_8UC3);
             cv::cvtColor(matOf(*small, CV_8UC1, side * 3 / 2), packed, cv::COLOR_YUV2BGR_NV12);
             cv::Mat floats;
             packed.convertTo(floats, CV_32F, perByte);
             std::array<cv::Mat, 3> planes;
             for (int i = 0; i < 3; ++i) {
                 planes[static_cast<std::size_t>(i)] = {side, side, CV_32FC1, dst->planeData(i)};
             }
             cv::split(floats, planes.data());
         }});
#endif
    return operation;
}

}  // namespace

std::vector<Operation> tensorOperations(Size size) {
    return {cameraToTensor(size, size.width == 320 ? 224 : size.width / 6 * 2)};
}

}  // namespace ox::benchmarks
