// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Memory: nothing is allocated once an object is armed, and a failed allocation leaves nothing
// behind but an object that can be armed again.
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>

#include "ox_core/ox_exception.h"
#include "ox_cv/ox_cv_backend_base.h"
#include "ox_cv/stages.h"
#include "support/allocation_counter.h"
#include "support/producer_contract.h"
#include "support/test_frame.h"
#include "vector/aligned_array.h"

namespace ox::test::allocation {

namespace {

struct Task {
    FrameFormat format;
    Size size;
    Target wanted;
};

// Formats with one, two and three planes, with and without half the rows. The last two are wide
// enough for vector code, one of them for that which copies pixels.
constexpr Task tasks[] = {
    {FRAME_GRAY8, {12, 10}, {FRAME_BGR24, {7, 6}}},
    {FRAME_BGR24, {12, 10}, {FRAME_I420, {7, 6}}},
    {FRAME_NV12, {12, 10}, {FRAME_YUV444_PLANAR, {8, 6}}},
    {FRAME_I420, {12, 10}, {FRAME_NV12, {8, 6}}},
    {FRAME_C1_16U, {12, 10}, {FRAME_C1_16U, {5, 9}}},
    {FRAME_NV12, {200, 10}, {FRAME_I420, {131, 6}}},
    {FRAME_BGR24, {66, 4}, {FRAME_GRAY8, {132, 8}}},
};

TEST(AllocationCounter, SeesTheTablesOfKernels) {
    std::uint64_t const before = allocationCalls();
    Simd::AlignedArray<int> array;
    array.Resize(3, 16);
    EXPECT_EQ(allocationCalls(), before + 1);
}

class Allocation : public testing::TestWithParam<StageClass> {
  protected:
    // Calls check(source frame, target) for each task that the class can do.
    template <class Check>
    void forEachTask(Check check) {
        int done = 0;
        for (Task const& task : tasks) {
            Random random;
            TestFrame const source(task.format, task.size, random);
            SCOPED_TRACE(describe(task.format, task.size));
            Target const target = GetParam().targetFor(source.layout(), task.wanted);
            if (canDo(source.frame(), target)) {
                check(source.frame(), target);
                ++done;
            }
        }
        EXPECT_GE(done, 5);  // words and enlargements aren't for all
    }

    static bool canDo(Frame const& source, Target const& target) {
        try {
            expectedOf(source, target);
            return true;
        } catch (Exception const&) {
            return false;
        }
    }

    // What an object that never saw a failure yields.
    static Frame expectedOf(Frame const& source, Target const& target) {
        std::unique_ptr<Stage> const stage = GetParam().make();
        stage->arm(source, target);
        Frame frame;
        produceFrame(stage->producer(), frame);
        return frame;
    }
};

class AllocationOfLinks : public Allocation {};

// Every row, with `next` alone at every third one.
void drain(IRowProducer& producer, Frame& frame, bool skips) {
    if (!skips) {
        produceFrame(producer, frame);
        return;
    }
    for (int row = 0; row < frame.height(); ++row) {
        if (row % 3 != 0) {
            RowData data{};
            data[0] = rowOf(frame, 0, row);
            producer.produce(data);
        }
        producer.next();
    }
}

TEST_P(Allocation, NoneInProduceAndNextAndASecondReuse) {
    forEachTask([](Frame const& source, Target const& target) {
        std::unique_ptr<Stage> const stage = GetParam().make();
        TestFrame result(target.format, target.size);
        for (bool const skips : {false, true}) {
            stage->arm(source, target);
            std::uint64_t const armed = allocationCalls();
            drain(stage->producer(), result.frame(), skips);
            EXPECT_EQ(allocationCalls(), armed) << "produce or next";
            stage->arm(source, target);
            EXPECT_EQ(allocationCalls(), armed) << "second reuse";
        }
    });
}

// A producer that needs no memory, unlike those that keep records.
class Rows : public IRowProducer {
  public:
    explicit Rows(Frame const& frame) : _layout(frame.layout()) {}
    FrameLayout const& layout() override { return _layout; }
    void produce(RowData&) override {}
    bool next() override { return true; }

  private:
    FrameLayout _layout;
};

TEST_P(AllocationOfLinks, NoneOverAProducer) {
    forEachTask([](Frame const& source, Target const& target) {
        Rows rows(source);
        std::unique_ptr<Stage> const stage = GetParam().make();
        TestFrame result(target.format, target.size);
        stage->arm(rows, target);
        std::uint64_t const armed = allocationCalls();
        drain(stage->producer(), result.frame(), false);
        EXPECT_EQ(allocationCalls(), armed) << "produce or next";
        stage->arm(rows, target);
        EXPECT_EQ(allocationCalls(), armed) << "second reuse";
    });
}

TEST_P(Allocation, AFailureInTheConstructorLeavesNothing) {
    std::unique_ptr<Stage> const stage = GetParam().make();
    stage->destroy();
    std::int64_t const live = liveAllocations();
    for (std::uint64_t k = 1;; ++k) {
        bool struck = false;
        try {
            FailingAllocation const failing(k);
            try {
                stage->construct();
            } catch (...) {
                struck = true;
                throw;
            }
        } catch (Exception const& exception) {
            EXPECT_EQ(exception.status, StatusCapacityExceeded);
        } catch (std::bad_alloc const&) {
        }
        stage->destroy();
        EXPECT_EQ(liveAllocations(), live) << "allocation " << k;
        if (!struck) {
            break;
        }
    }
}

// Arms with the k-th allocation failing; true if it was never reached.
template <class Source>
bool armsWithout(Stage& stage, Source& source, Target const& target, std::uint64_t k) {
    bool struck = false;
    try {
        FailingAllocation const failing(k);
        try {
            stage.arm(source, target);
            struck = failing.struck();
        } catch (...) {
            struck = failing.struck();
            throw;
        }
        EXPECT_FALSE(struck) << "the failure of allocation " << k << " went unnoticed";
    } catch (Exception const& exception) {
        EXPECT_TRUE(struck) << exception.what();
        EXPECT_EQ(exception.status, StatusCapacityExceeded) << exception.what();
    }
    return !struck;
}

TEST_P(Allocation, AFailureInReuseLeavesAnObjectThatCanBeArmed) {
    forEachTask([](Frame const& source, Target const& target) {
        Frame const expected = expectedOf(source, target);
        std::unique_ptr<Stage> const stage = GetParam().make();
        stage->destroy();
        TestFrame result(target.format, target.size);
        std::int64_t const live = liveAllocations();
        bool done = false;
        for (std::uint64_t k = 1; !done; ++k) {
            stage->construct();
            done = armsWithout(*stage, source, target, k);
            stage->arm(source, target);
            fill(result.frame(), 0);
            produceFrame(stage->producer(), result.frame());
            EXPECT_TRUE(samePixels(result.frame(), expected)) << "after allocation " << k;
            stage->destroy();
            EXPECT_EQ(liveAllocations(), live) << "after allocation " << k;
        }
    });
}

// An object that served another geometry, or another source, before the failure.
TEST_P(Allocation, AFailureInALaterReuseLeavesAnObjectThatCanBeArmed) {
    Random random;
    TestFrame const before(FRAME_YV12, {16, 14}, random);
    Target const earlier = GetParam().targetFor(before.layout(), {FRAME_BGR24, {10, 8}});
    forEachTask([&](Frame const& source, Target const& target) {
        Frame const expected = expectedOf(source, target);
        Frame const expected_before = expectedOf(before.frame(), earlier);
        std::unique_ptr<Stage> const stage = GetParam().make();
        TestFrame result(target.format, target.size);
        TestFrame result_before(earlier.format, earlier.size);
        bool done = false;
        for (std::uint64_t k = 1; !done; ++k) {
            stage->construct();
            stage->arm(before.frame(), earlier);
            done = armsWithout(*stage, source, target, k);
            fill(result.frame(), 0);
            stage->arm(source, target);
            produceFrame(stage->producer(), result.frame());
            EXPECT_TRUE(samePixels(result.frame(), expected)) << "after allocation " << k;
            // The old task again, right after the failure: nothing half done may be taken for it.
            stage->construct();
            stage->arm(before.frame(), earlier);
            armsWithout(*stage, source, target, k);
            fill(result_before.frame(), 0);
            stage->arm(before.frame(), earlier);
            produceFrame(stage->producer(), result_before.frame());
            EXPECT_TRUE(samePixels(result_before.frame(), expected_before))
                << "the old task after allocation " << k;
        }
    });
}

TEST_P(AllocationOfLinks, AFailureOverAProducerLeavesAnObjectThatCanBeArmed) {
    forEachTask([](Frame const& source, Target const& target) {
        ProbeProducer probe(source);
        Rows rows(source);
        std::unique_ptr<Stage> const stage = GetParam().make();
        stage->arm(probe, target);
        TestFrame expected(target.format, target.size);
        produceFrame(stage->producer(), expected.frame());
        TestFrame result(target.format, target.size);
        bool done = false;
        for (std::uint64_t k = 1; !done; ++k) {
            stage->construct();
            done = armsWithout(*stage, rows, target, k);
            probe.rewind();
            stage->arm(probe, target);
            fill(result.frame(), 0);
            produceFrame(stage->producer(), result.frame());
            EXPECT_TRUE(samePixels(result.frame(), expected.frame())) << "after allocation " << k;
        }
    });
}

// Asks for every row, as long as the producer bears it.
void useAll(IRowProducer& producer, TestFrame& result) {
    try {
        for (int row = 0; row < result.frame().height(); ++row) {
            RowData data{};
            for (int plane = 0; plane < result.layout().planeCount; ++plane) {
                data[plane] = result.row(plane, 0);
            }
            producer.produce(data);
            producer.next();
        }
    } catch (Exception const&) {
        return;
    }
    result.expectGapsUntouched();
}

// After a failed `reuse` nobody should go on, but whoever does must come to no harm: the tables may
// be those of a larger frame than the one that was served before.
TEST_P(Allocation, AFailedObjectIsHarmless) {
    TestFrame const small(FRAME_I420, {8, 8}, Placement{0, Guard::AtEnd});
    Target const earlier = GetParam().targetFor(small.layout(), {FRAME_NV12, {4, 4}});
    forEachTask([&](Frame const& source, Target const& target) {
        std::unique_ptr<Stage> const stage = GetParam().make();
        TestFrame result(target.format, target.size, Placement{0, Guard::AtEnd});
        for (bool const used : {false, true}) {
            bool done = false;
            for (std::uint64_t k = 1; !done; ++k) {
                stage->construct();
                if (used) {
                    stage->arm(small.frame(), earlier);
                }
                done = armsWithout(*stage, source, target, k);
                if (!done) {
                    useAll(stage->producer(), result);
                }
            }
        }
    });
}

INSTANTIATE_TEST_SUITE_P(, Allocation, testing::ValuesIn(stageClasses()),
                         [](auto const& parameter) { return std::string(parameter.param.name); });
INSTANTIATE_TEST_SUITE_P(, AllocationOfLinks, testing::ValuesIn(linkClasses()),
                         [](auto const& parameter) { return std::string(parameter.param.name); });

class BackendAllocation : public testing::Test {
  protected:
    BackendAllocation() {
        Random random;
        fill(source.frame(), random);
    }

    // Fails the test if `call` allocates anything the second time.
    template <class Call>
    void expectSettled(char const* name, Call call) {
        for (ResizeMethod const method : {ResizeNearestNeighbour, ResizeBilinear, ResizeArea}) {
            backend.setIntProperty(PropertyResizeMethod, static_cast<int>(method));
            call();
            std::uint64_t const before = allocationCalls();
            call();
            EXPECT_EQ(allocationCalls(), before) << name << ", method " << method;
        }
    }

    TestFrame source{FRAME_I420, {200, 10}};  // wide enough for vector code
    TestFrame converted{FRAME_BGR24, {200, 10}};
    TestFrame resized{FRAME_I420, {130, 6}};
    TestFrame both{FRAME_BGR24, {8, 6}};
    TestFrame floats{FRAME_BGR_32F_PLANAR, {4, 4}};
    CvBackendBase backend;
};

TEST_F(BackendAllocation, NoneInARepeatedCall) {
    Frame const& from = source.frame();
    expectSettled("colorCvt", [&] { backend.colorCvt(from, converted.frame(), Rect()); });
    expectSettled("colorCvt of a region", [&] {
        backend.colorCvt(from, both.frame(), {2, 2, 8, 6});
    });
    expectSettled("resize", [&] { backend.resize(from, resized.frame(), Rect(), Rect()); });
    expectSettled("resize of a region", [&] {
        backend.resize(from, resized.frame(), {2, 2, 6, 4}, {0, 0, 4, 4});
    });
    expectSettled("convert", [&] { backend.convert(from, both.frame(), Rect()); });
    expectSettled("add", [&] { backend.add(floats.frame(), 1.0F, Rect()); });
    expectSettled("mul", [&] { backend.mul(floats.frame(), 2.0F, Rect()); });
}

TEST_F(BackendAllocation, AFailureLeavesABackendThatWorks) {
    CvBackendBase fresh;
    TestFrame expected(FRAME_BGR24, {8, 6});
    fresh.convert(source.frame(), expected.frame(), Rect());
    std::int64_t const live = liveAllocations();
    bool done = false;
    for (std::uint64_t k = 1; !done; ++k) {
        auto const victim = std::make_unique<CvBackendBase>();
        try {
            FailingAllocation const failing(k);
            victim->convert(source.frame(), both.frame(), Rect());
            done = !failing.struck();
        } catch (Exception const& exception) {
            EXPECT_EQ(exception.status, StatusCapacityExceeded) << exception.what();
        }
        fill(both.frame(), 0);
        victim->convert(source.frame(), both.frame(), Rect());
        EXPECT_TRUE(samePixels(both.frame(), expected.frame())) << "after allocation " << k;
    }
    EXPECT_EQ(liveAllocations(), live);
}

}  // namespace

}  // namespace ox::test::allocation
