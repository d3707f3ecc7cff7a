// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Threads with objects of their own get what one thread gets.

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "ox_cv/ox_cv.h"
#include "support/random.h"
#include "support/test_frame.h"

namespace ox::test::laws_of_threads {
namespace {

struct Job {
    TestFrame src;
    Size size;
    ResizeMethod method;
};

std::vector<Job> drawJobs(int count) {
    constexpr FrameFormat formats[]{FRAME_BGR24, FRAME_NV12, FRAME_I420, FRAME_GRAY8};
    Random random(31);
    std::vector<Job> jobs;
    for (int i = 0; i < count; ++i) {
        Size const size{2 * random.between(1, 30), 2 * random.between(1, 30)};
        jobs.push_back({TestFrame(formats[random.between(0, 3)], size, random),
                        {2 * random.between(1, 30), 2 * random.between(1, 30)},
                        static_cast<ResizeMethod>(random.between(0, ResizeArea))});
    }
    return jobs;
}

// Scales and converts by both backends, and warps, which starts threads of its own where a picture
// is large enough for them.
std::vector<Frame> resultsOf(std::vector<Job> const& jobs) {
    CvBackendBase base;
    CvBackendSimd simd;
    simd.setIntProperty(PropertyWarpMethod, ResizeBilinear);
    std::vector<Frame> results;
    for (Job const& job : jobs) {
        for (ICvBackend* const backend :
             {static_cast<ICvBackend*>(&base), static_cast<ICvBackend*>(&simd)}) {
            backend->setIntProperty(PropertyResizeMethod, static_cast<int>(job.method));
            Frame scaled;
            scaled.reuse(job.src.frame().format(), job.size, DeviceContext(), 0);
            backend->resize(job.src.frame(), scaled, emptyRoi(), emptyRoi());
            Frame gray;
            gray.reuse(FRAME_GRAY8, job.size, DeviceContext(), 0);
            backend->colorCvt(scaled, gray, {0, 0, job.size.width, job.size.height});
            results.push_back(scaled);
            results.push_back(gray);
        }
        float const matrix[2][3]{{0.75F, 0.25F, 3}, {-0.25F, 1.5F, 7}};
        Frame warped;
        warped.reuse(job.src.frame().format(), job.size, DeviceContext(), 0);
        warped.setZero();
        simd.warpAffine(job.src.frame(), warped, matrix, emptyRoi(), false);
        results.push_back(warped);
    }
    return results;
}

TEST(LawOfThreads, GiveWhatOneGives) {
    std::vector<Job> const jobs = drawJobs(250);
    std::vector<Frame> const expected = resultsOf(jobs);
    std::vector<std::vector<Frame>> results(4);
    std::vector<std::thread> threads;
    for (std::vector<Frame>& of_thread : results) {
        threads.emplace_back([&] { of_thread = resultsOf(jobs); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (std::vector<Frame> const& of_thread : results) {
        ASSERT_EQ(of_thread.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            ASSERT_TRUE(samePixels(of_thread[i], expected[i])) << "result " << i;
        }
    }
}

}  // namespace
}  // namespace ox::test::laws_of_threads
