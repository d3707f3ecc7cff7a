// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Whoever goes on after a failed `reuse` comes to an end and to no harm, and the next `reuse`
// revives the object.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "ox_core/ox_exception.h"
#include "ox_cv/scaler_rows.h"
#include "ox_cv/stages.h"
#include "support/allocation_counter.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

constexpr int mostRows = 16;

// Asks for rows that may be refused, and moves on whether they were or not.
void expectAnEnd(IRowProducer& producer) {
    TestFrame target(FRAME_C4_8U, {64, 4}, Placement{0, Guard::AtEnd});
    for (int step = 0; step <= mostRows; ++step) {
        RowData row{{target.row(0, 0), target.row(0, 1), target.row(0, 2), nullptr}};
        try {
            producer.produce(row);
        } catch (Exception const&) {
        }
        try {
            if (!producer.next()) {
                return;
            }
        } catch (Exception const& exception) {
            EXPECT_EQ(exception.status, StatusNotInitialized) << exception.what();
            return;
        }
    }
    ADD_FAILURE() << "more rows than any source had";
}

class FailedReuse : public testing::TestWithParam<StageClass> {
  protected:
    using Failure = std::function<void(Stage&)>;

    FailedReuse() {
        fill(_source.frame(), 120);
        fill(_before.frame(), 90);
    }

    // Objects that were never armed, and objects that served another source, if any can.
    void check(char const* name, Failure const& fail) {
        SCOPED_TRACE(name);
        for (int const rows_before : {-1, 0, 3}) {
            std::unique_ptr<Stage> const stage = GetParam().make();
            if (rows_before >= 0) {
                stage->arm(_before.frame(), targetFor(_before, {FRAME_NV12, {6, 6}}));
                for (int row = 0; row < rows_before; ++row) {
                    stage->producer().next();
                }
            }
            EXPECT_THROW(fail(*stage), Exception);
            expectAnEnd(stage->producer());
            expectRevived(*stage);
        }
    }

    void checkProducer(char const* name, ClaimingProducer source) {
        check(name, [&](Stage& stage) { stage.arm(source, target); });
    }

    // Flat pixels stay as they are in every class.
    void expectRevived(Stage& stage) {
        stage.arm(_source.frame(), target);
        Frame frame;
        produceFrame(stage.producer(), frame);
        EXPECT_EQ(frame.size(), target.size);
        EXPECT_TRUE(isFilledWith(frame, 120));
    }

    static Target targetFor(TestFrame const& source, Target const& wanted) {
        return GetParam().targetFor(source.layout(), wanted);
    }

    Frame const& source() const { return _source.frame(); }
    bool copiesOnly() const {
        return target.format == source().format() && target.size == source().size();
    }

  private:
    TestFrame _source{FRAME_GRAY8, {8, 8}};
    TestFrame _before{FRAME_I420, {12, 12}};

  protected:
    Target const target = targetFor(_source, {FRAME_BGR24, {2, 2}});
};

class FailedReuseOfLinks : public FailedReuse {};
// Classes that have a choice of a target.
class FailedReuseOfChanges : public FailedReuse {};
// Classes whose 16.16 coordinates, or tables, must reach the last sample.
class FailedReuseByCoordinates : public FailedReuse {};

template <class Condition>
std::vector<StageClass> classesThat(Condition condition) {
    std::vector<StageClass> classes;
    std::copy_if(stageClasses().begin(), stageClasses().end(), std::back_inserter(classes),
                 condition);
    return classes;
}

bool changesSomething(StageClass const& stage) {
    return stage.changes_format || stage.changes_width || stage.changes_height;
}

bool hasCoordinates(StageClass const& stage) {
    bool const area = std::string(stage.name).find("Area") != std::string::npos;
    return (stage.changes_width || stage.changes_height) && !area;
}

TEST_P(FailedReuse, SourceThatIsNotInitialized) {
    check("no frame", [&](Stage& stage) { stage.arm(Frame(), target); });
}

TEST_P(FailedReuseOfChanges, SourceWithoutPixels) {
    TestFrame wide(FRAME_GRAY8, {8, 8});
    Frame const none = getRegion(wide.frame(), {0, 0, 0, 0});
    check("no pixels", [&](Stage& stage) { stage.arm(none, target); });
}

TEST_P(FailedReuseOfChanges, TargetThatDoesNotExist) {
    Target const none = targetFor(TestFrame(FRAME_GRAY8, {8, 8}), {FRAME_FORMAT_NONE, {0, 0}});
    check("no target", [&](Stage& stage) { stage.arm(source(), none); });
}

TEST_P(FailedReuse, EachAllocation) {
    int failures = 0;
    for (std::uint64_t k = 1;; ++k) {
        std::unique_ptr<Stage> const stage = GetParam().make();
        try {
            FailingAllocation const failing(k);
            stage->arm(source(), target);
            if (!failing.struck()) {
                break;
            }
        } catch (Exception const&) {
            ++failures;
        }
        expectAnEnd(stage->producer());
        expectRevived(*stage);
    }
    EXPECT_EQ(failures > 0, !copiesOnly());
}

TEST_P(FailedReuseOfLinks, ProducersThatAreRefused) {
    checkProducer("no size", ClaimingProducer::ofSize({0, 0}));
    if (!copiesOnly()) {
        checkProducer("no planes", ClaimingProducer::withoutPlanes());
    }
}

// Both tables are built, or the first of them, before the second one is found to be out of reach.
TEST_P(FailedReuseByCoordinates, SidesThatCoordinatesCannotHold) {
    checkProducer("both sides", ClaimingProducer::ofSize({40000, 40000}));
    // Classes that remember keep the first table, with the height that it was made for.
    if (GetParam().changes_width && GetParam().changes_height && !GetParam().remembers) {
        checkProducer("a high one", ClaimingProducer::ofSize({16, 40000}));
    }
}

std::string nameOf(testing::TestParamInfo<StageClass> const& parameter) {
    return parameter.param.name;
}

INSTANTIATE_TEST_SUITE_P(, FailedReuse, testing::ValuesIn(stageClasses()), nameOf);
INSTANTIATE_TEST_SUITE_P(, FailedReuseOfLinks, testing::ValuesIn(linkClasses()), nameOf);
INSTANTIATE_TEST_SUITE_P(, FailedReuseOfChanges, testing::ValuesIn(classesThat(changesSomething)),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(, FailedReuseByCoordinates, testing::ValuesIn(classesThat(hasCoordinates)),
                         nameOf);

}  // namespace

}  // namespace ox::test
