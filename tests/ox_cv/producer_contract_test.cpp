// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What a consumer may rely on, for every producer class.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "ox_core/ox_exception.h"
#include "ox_cv/stages.h"
#include "support/producer_contract.h"
#include "support/test_frame.h"

namespace ox::test::producer_contract {

namespace {

std::vector<Size> const sourceSizes{{12, 10}, {9, 7}, {4, 2}, {5, 1}};
std::vector<Size> const targetSizes{{7, 6}, {12, 5}, {5, 10}, {17, 13}, {9, 7}, {1, 1}};

bool isYuv(FrameFormat format) {
    return format >= FRAME_I420 && format <= FRAME_YUV444_PLANAR;
}

// Whether the class does that work at all.
bool works(ProducerContract const& contract) {
    try {
        Frame frame;
        produceFrame(contract.arm(), frame);
        return true;
    } catch (Exception const&) {
        return false;
    }
}

class ProducerContracts : public testing::TestWithParam<StageClass> {
  protected:
    // Calls check(source frame, what to make of it) for all that the class is asked to do.
    template <class Check>
    void forEachTask(Check check) {
        Random random;
        for (FrameFormat const format : allFormats()) {
            for (Size const size : sourceSizes) {
                TestFrame source(format, size, Placement{4});
                fillFloats(source.frame(), random, -10.0F, 300.0F);
                forEachTarget(source.layout(), [&](Target const& target) {
                    SCOPED_TRACE(std::string(GetParam().name) + " of " + describe(format, size));
                    check(source.frame(), target);
                });
            }
        }
    }

    template <class Check>
    void forEachTarget(FrameLayout const& source, Check check) {
        if (GetParam().changes_format) {
            for (FrameFormat const format : allFormats()) {
                check(Target{format, source.size});
            }
        } else if (GetParam().changes_width || GetParam().changes_height) {
            for (Size const size : targetSizes) {
                check(GetParam().targetFor(source, {source.format, size}));
            }
        } else {
            check(Target{source.format, source.size});
        }
    }

    ProducerContract contractFor(FrameFormat source, Target const& target,
                                 std::function<IRowProducer&()> arm) {
        bool const yuv = isYuv(source) || isYuv(target.format);
        return {std::move(arm), target.format, target.size, Skips::Any,
                GetParam().changes_format && yuv};
    }

    int checked = 0;
};

class ContractsOfLinks : public ProducerContracts {};

TEST_P(ProducerContracts, OverFrames) {
    std::unique_ptr<Stage> const stage = GetParam().make();
    forEachTask([&](Frame const& source, Target const& target) {
        ProducerContract contract = contractFor(source.format(), target, [&]() -> IRowProducer& {
            if (GetParam().remembers) {
                stage->construct();
            }
            stage->arm(source, target);
            return stage->producer();
        });
        contract.skips = GetParam().chained ? Skips::None : Skips::Any;
        if (works(contract)) {
            checkProducer(contract);
            ++checked;
        }
    });
    EXPECT_GT(checked, 90);
}

// The same bytes as over a frame, and each source row at most once. Windows are made anew for each
// pass, since one that served a stream before doesn't skip.
TEST_P(ContractsOfLinks, OverProducers) {
    std::unique_ptr<Stage> const stage = GetParam().make();
    std::unique_ptr<Stage> const over_frame = GetParam().make();
    forEachTask([&](Frame const& source, Target const& target) {
        ProbeProducer probe(source);
        ProducerContract contract = contractFor(source.format(), target, [&]() -> IRowProducer& {
            probe.rewind();
            stage->construct();
            stage->arm(probe, target);
            return stage->producer();
        });
        contract.skips = GetParam().changes_height ? Skips::None : Skips::EvenPairs;
        if (!works(contract)) {
            return;
        }
        Frame const got = checkProducer(contract);
        if (!GetParam().changes_height) {
            TestFrame expected(target.format, target.size);
            over_frame->arm(source, target);
            produceFrame(over_frame->producer(), expected.frame());
            EXPECT_TRUE(samePixels(got, expected.frame()));
        }
        ++checked;
    });
    EXPECT_GT(checked, 90);
}

INSTANTIATE_TEST_SUITE_P(, ProducerContracts, testing::ValuesIn(stageClasses()),
                         [](auto const& parameter) { return std::string(parameter.param.name); });
INSTANTIATE_TEST_SUITE_P(, ContractsOfLinks, testing::ValuesIn(linkClasses()),
                         [](auto const& parameter) { return std::string(parameter.param.name); });

}  // namespace

}  // namespace ox::test::producer_contract
