// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The taps of an axis against the plain model: for every destination sample where they begin, which
// row of weights they take, and what stands in it.
#include <gtest/gtest.h>

#include "ox_cv/filter_pair.h"
#include "ox_cv/model_bridge.h"
#include "ox_cv/ox_impl_scale_data.h"

namespace ox::test {
namespace {

template <class Weight>
testing::AssertionResult sameTaps(impl::ScaleData<Weight> const& got,
                                  model::AxisTaps const& wanted) {
    if (got.aperture() != wanted.aperture()) {
        return testing::AssertionFailure()
               << "an aperture of " << got.aperture() << ", the model has " << wanted.aperture();
    }
    if (got.sources().size() != wanted.entries().size()) {
        return testing::AssertionFailure()
               << got.sources().size() << " entries, the model has " << wanted.entries().size();
    }
    for (std::size_t i = 0; i < got.sources().size(); ++i) {
        auto const [start, row] = got.sources()[i];
        model::AxisTaps::Entry const entry = wanted.entries()[i];
        if (start != entry.start || row != entry.row) {
            return testing::AssertionFailure()
                   << "entry " << i << " is " << start << " by row " << row << ", the model has "
                   << entry.start << " by row " << entry.row;
        }
        Weight const* const weights = got.kernels().row(row);
        for (int k = 0; k < wanted.aperture(); ++k) {
            int const weight = wanted.weights(entry)[static_cast<std::size_t>(k)];
            if (weights[k] != weight) {
                return testing::AssertionFailure()
                       << "weight " << k << " of row " << row << " is " << int{weights[k]}
                       << ", the model has " << weight;
            }
        }
    }
    return testing::AssertionSuccess();
}

// Objects are kept from case to case, as a pass that goes on to other frames would, and now and
// then made anew.
template <class Weight>
class ScaleWeightsSweep : public testing::Test {
  protected:
    static constexpr int precision = 8 * sizeof(Weight);

    void run(IKernel& kernel, model::Filter& filter, int src, int dst) {
        if (!_got || oneIn(_random, 8)) {
            _got.emplace();
            _wanted.emplace(precision);
        }
        model::Outcome const wanted = model::attempt([&] { _wanted->make(filter, src, dst); });
        model::Outcome const got = outcomeOf([&] { _got->reuse(kernel, src, dst); });
        ASSERT_TRUE(agree(got, wanted));
        ASSERT_TRUE(sameTaps(*_got, *_wanted));
        ASSERT_EQ(_got->srcSize(), got.ok ? src : 0);
        ASSERT_EQ(_got->dstSize(), got.ok ? dst : 0);
        _accepted += got.ok ? 1 : 0;
    }

    void run(FilterPair& pair, int src, int dst) {
        run(pair.library(), pair.model(), src, dst);
        ASSERT_TRUE(pair.toldAlike());
    }

    // All sizes up to a limit, and under emulation some.
    template <class Run>
    void forSmallSizes(int limit, Run runSizes) {
        for (int src = 1; src <= limit; ++src) {
            for (int dst = 1; dst <= src; ++dst) {
                if (emulated() && !oneIn(_random, 20)) {
                    continue;
                }
                SCOPED_TRACE(std::to_string(src) + " to " + std::to_string(dst));
                runSizes(src, dst);
                if (this->HasFatalFailure()) {
                    return;
                }
            }
        }
    }

    template <class Run>
    void forLargeSizes(int count, Run runSizes) {
        for (int i = 0; i < draws(count); ++i) {
            int const src = _random.between(1, oneIn(_random, 3) ? 8192 : 700);
            int const dst =
                _random.between(oneIn(_random, 3) ? (src + 31) / 32 : (src + 3) / 4, src);
            SCOPED_TRACE(std::to_string(src) + " to " + std::to_string(dst));
            runSizes(src, dst);
            if (this->HasFatalFailure()) {
                return;
            }
        }
    }

    void sweep(std::vector<FilterShape> const& shapes, int limit, int large) {
        for (FilterShape const& shape : shapes) {
            SCOPED_TRACE(shape.name);
            FilterPair pair(shape);
            forSmallSizes(limit, [&](int src, int dst) { run(pair, src, dst); });
            forLargeSizes(large, [&](int src, int dst) { run(pair, src, dst); });
            if (this->HasFatalFailure()) {
                return;
            }
        }
    }

    Random _random{11};
    int _accepted = 0;

  private:
    std::optional<impl::ScaleData<Weight>> _got;
    std::optional<model::AxisTaps> _wanted;
};

using WeightTypes = testing::Types<signed char, short>;
class WeightNames {
  public:
    template <class Weight>
    static std::string GetName(int) {
        return std::to_string(8 * sizeof(Weight)) + "Bits";
    }
};
TYPED_TEST_SUITE(ScaleWeightsSweep, WeightTypes, WeightNames);

TYPED_TEST(ScaleWeightsSweep, BoxKernel) {
    BoxKernel kernel;
    model::BoxFilter filter;
    auto const run = [&](int src, int dst) { this->run(kernel, filter, src, dst); };
    this->forSmallSizes(64, run);
    this->forLargeSizes(400, run);
    EXPECT_GT(this->_accepted, draws(100));
}

TYPED_TEST(ScaleWeightsSweep, UsualFilters) {
    this->sweep(usualFilters(), 64, 60);
    EXPECT_GT(this->_accepted, draws(1000));
}

TYPED_TEST(ScaleWeightsSweep, WildFilters) {
    this->sweep(wildFilters(), 40, 60);
    EXPECT_GT(this->_accepted, draws(100));
}

TYPED_TEST(ScaleWeightsSweep, RefusedFilters) {
    this->sweep(refusedFilters(), 12, 20);
}

// Refusals for sizes, between uses that succeed.
TYPED_TEST(ScaleWeightsSweep, Sizes) {
    FilterPair pair(usualFilters().front());
    int const sizes[] = {-8193, -1,  0,   1,   2,   31,   32,   33,   64,   65,        255,
                         256,   257, 258, 512, 513, 8191, 8192, 8193, 8224, 2147483647};
    for (int const src : sizes) {
        for (int const dst : sizes) {
            SCOPED_TRACE(std::to_string(src) + " to " + std::to_string(dst));
            this->run(pair, src, dst);
            if (this->HasFatalFailure()) {
                return;
            }
        }
    }
}

// A use takes nothing over from the one before, whatever its filter and sizes.
TYPED_TEST(ScaleWeightsSweep, ChangingFilters) {
    std::vector<FilterShape> shapes = usualFilters();
    shapes.insert(shapes.end(), wildFilters().begin(), wildFilters().end());
    shapes.insert(shapes.end(), refusedFilters().begin(), refusedFilters().end());
    FilterPair pair(shapes.front());
    for (int i = 0; i < draws(2000); ++i) {
        pair.shape = shapes[this->_random.next() % shapes.size()];
        int const src = this->_random.between(1, 150);
        int const dst = this->_random.between((src + 9) / 10, src);
        SCOPED_TRACE(std::string(pair.shape.name) + ", " + std::to_string(src) + " to " +
                     std::to_string(dst));
        this->run(pair, src, dst);
        if (this->HasFatalFailure()) {
            return;
        }
    }
    EXPECT_GT(this->_accepted, draws(50));
}

}  // namespace
}  // namespace ox::test
