// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The links of chains, each beside its counterpart in the model, over their whole lives.
#pragma once

#include <memory>
#include <span>

#include "fuzz/input.h"
#include "model/stream.h"
#include "ox_cv/filter_pair.h"
#include "ox_cv/ox_row_producer.h"

namespace ox::fuzz {

// What a link is armed for. Each takes of it what it knows.
struct LinkTarget {
    int format = 0;
    Size size;
    int variant = 0;  // method or precision; rows of a window
    test::FilterPair* filter = nullptr;
};

class Link {
  public:
    virtual ~Link() = default;
    virtual void armLibrary(Frame const& source, LinkTarget const& target) = 0;
    virtual void armLibrary(IRowProducer& source, LinkTarget const& target) = 0;
    virtual void armModel(model::Source source, LinkTarget const& target) = 0;
    virtual IRowProducer& library() = 0;
    virtual model::Stream& modelled() = 0;
    // Renews the library's object; the model's is made anew.
    virtual void renew() = 0;
};

struct LinkKind {
    char const* name;
    bool takes_producers;
    std::unique_ptr<Link> (*make)();
};

std::span<LinkKind const> linkKinds();

}  // namespace ox::fuzz
