// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What holds for every operation, whatever the picture: draws of formats, sizes and regions, and
// results that two ways have to share.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "ox_core/ox_core.h"
#include "ox_cv/ox_cv_backend.h"
#include "support/random.h"
#include "support/test_frame.h"

namespace ox::test {

constexpr int drawCount = 1000;

FrameFormat drawFormat(Random& random);
// One in which samples of three planes belong to the same pixel, or that has one plane.
FrameFormat drawByteFormat(Random& random);
Size drawSize(Random& random, int longest = 48);
// A rectangle inside, not empty.
Rect drawRegion(Random& random, Size size);
ResizeMethod drawMethod(Random& random);

// Random pixels. Floats are numbers from -300 to 300, as no two ways promise the same NaN.
TestFrame drawPicture(FrameFormat format, Size size, Random& random, std::size_t gap = 0);

// What an operation made of a frame of bytes 77: the pixels, or the refusal.
struct Outcome {
    bool served;
    Status status;  // of a refusal
    TestFrame picture;
};

template <class Operation>
Outcome outcomeOf(FrameFormat format, Size size, std::size_t gap, Operation operation) {
    Outcome outcome{true, StatusAssertionFailed,
                    TestFrame(format, size, Placement{gap, Guard::None})};
    fill(outcome.picture.frame(), 77);
    try {
        operation(outcome.picture.frame());
    } catch (Exception const& refusal) {
        outcome.served = false;
        outcome.status = refusal.status;
    }
    return outcome;
}

template <class Operation>
Outcome outcomeOf(FrameFormat format, Size size, Operation operation) {
    return outcomeOf(format, size, 0, operation);
}

// Draws until a law is broken.
// @param draw draws once, and tells what it drew if a way differs from the other
// @param least draws that mustn't be refused, so that the law is about something
class Law {
  public:
    explicit Law(std::uint64_t seed) : random(seed) {}

    template <class Draw>
    void holds(int least, Draw draw) {
        for (int i = 0; i < drawCount && !testing::Test::HasFailure(); ++i) {
            _told = "draw " + std::to_string(i) + ":";
            draw();
        }
        EXPECT_GE(_served, least) << "of " << drawCount << " draws, the others were refused";
    }

    // Of what was drawn.
    template <class... Facts>
    void tell(Facts const&... facts) {
        ((_told += " " + told(facts)), ...);
    }

    // Both were refused with the same status, or have the same pixels.
    void expectSame(Outcome const& one, Outcome const& other) {
        EXPECT_EQ(one.served, other.served) << _told;
        EXPECT_EQ(one.status, other.status) << _told;
        if (one.served && other.served) {
            ++_served;
            EXPECT_TRUE(samePixels(one.picture.frame(), other.picture.frame())) << _told;
        }
    }

    Random random;

  private:
    static std::string told(std::string const& text) { return text; }
    static std::string told(FrameFormat format) { return toString(format); }
    static std::string told(Size size) {
        return std::to_string(size.width) + "x" + std::to_string(size.height);
    }
    static std::string told(Rect rect) {
        return told(Size{rect.width, rect.height}) + "+" + std::to_string(rect.x) + "+" +
               std::to_string(rect.y);
    }
    static std::string told(ResizeMethod method) {
        return "method " + std::to_string(static_cast<int>(method));
    }
    static std::string told(int number) { return std::to_string(number); }

    std::string _told;
    int _served = 0;
};

}  // namespace ox::test
