// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/stages.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <ostream>
#include <type_traits>

#include "ox_cv/ox_format_converter.h"
#include "ox_cv/ox_row_copier.h"
#include "ox_cv/ox_scaler.h"
#include "ox_cv/ox_scaler_area.h"
#include "ox_cv/ox_scaler_bilinear.h"
#include "ox_cv/ox_scaler_convolutional.h"
#include "ox_cv/ox_scaler_nn.h"

namespace ox::test {

namespace {

// `Arm` is the type of a function that arms a producer: arm(producer, source, target).
template <class Producer, class Arm>
class StageOf : public Stage {
  public:
    StageOf() { construct(); }
    void construct() override { _producer.emplace(); }
    void destroy() override { _producer.reset(); }
    void arm(Frame const& source, Target const& target) override {
        Arm()(*_producer, source, target);
    }
    void arm(IRowProducer& source, Target const& target) override {
        Arm()(*_producer, source, target);
    }
    void renew() override { _producer->renew(); }
    IRowProducer& producer() override { return *_producer; }

    static std::unique_ptr<Stage> make() { return std::make_unique<StageOf>(); }

  private:
    std::optional<Producer> _producer;
};

struct Changes {
    bool format;
    bool width;
    bool height;
};

enum class Inside { Window, Chain };
enum class TakenSources { Any, Frames };
enum class Streams { Independent, Traced };

template <class Producer, class Arm>
StageClass stage(char const* name, Changes changes, Arm, TakenSources sources = TakenSources::Any,
                 Inside inside = Inside::Window, Streams streams = Streams::Independent) {
    return {name,
            changes.format,
            changes.width,
            changes.height,
            sources == TakenSources::Any,
            inside == Inside::Chain,
            streams == Streams::Traced,
            StageOf<Producer, Arm>::make};
}

template <ScalerPrecision Precision>
struct ArmArea {
    template <class Source>
    void operator()(ScalerAreaX& scaler, Source& source, Target const& target) const {
        scaler.reuse(source, target.size.width, Precision);
    }
    template <class Source>
    void operator()(ScalerAreaY& scaler, Source& source, Target const& target) const {
        scaler.reuse(source, target.size.height, Precision);
    }
};

struct ArmAreaXY {
    template <class Source>
    void operator()(scaleAreaXY& scaler, Source& source, Target const& target) const {
        if constexpr (std::is_same_v<Source, Frame const>) {
            scaler.reuse(source, target.size, OX_SCALER_FIXED_POINT_16S);
        }
    }
};

// The scaler knows its filter by the address.
struct BoxScaler : ScalerConvolutional {
    BoxKernel kernel;
};

template <ScalerPrecision Precision>
struct ArmConvolutional {
    template <class Source>
    void operator()(BoxScaler& scaler, Source& source, Target const& target) const {
        scaler.reuse(scaler.kernel, source, target.size, Precision);
    }
};

template <ScaleMethod Method>
struct ArmScaler {
    template <class Source>
    void operator()(Scaler& scaler, Source& source, Target const& target) const {
        scaler.reuse(source, target.size, Method);
    }
};

constexpr Changes nothing{false, false, false};
constexpr Changes newFormat{true, false, false};
constexpr Changes newWidth{false, true, false};
constexpr Changes newHeight{false, false, true};
constexpr Changes newSize{false, true, true};

template <ScalerPrecision Precision>
StageClass convolutional(char const* name) {
    return stage<BoxScaler>(name, newSize, ArmConvolutional<Precision>(), TakenSources::Any,
                            Inside::Chain, Streams::Traced);
}

}  // namespace

std::vector<StageClass> const& stageClasses() {
    auto const source_only = [](auto& p, auto& source, Target const&) { p.reuse(source); };
    auto const by_format = [](auto& p, auto& source, Target const& t) {
        p.reuse(source, t.format);
    };
    auto const by_width = [](auto& p, auto& source, Target const& t) {
        p.reuse(source, t.size.width);
    };
    auto const by_height = [](auto& p, auto& source, Target const& t) {
        p.reuse(source, t.size.height);
    };
    auto const by_size = [](auto& p, auto& source, Target const& t) { p.reuse(source, t.size); };
    static std::vector<StageClass> const classes{
        stage<RowCopier>("RowCopier", nothing, source_only),
        stage<FormatConverter>("FormatConverter", newFormat, by_format),
        stage<ScalerNearestNeighbor>("ScalerNearestNeighbor", newSize, by_size),
        stage<ScalerBilinearX>("ScalerBilinearX", newWidth, by_width),
        stage<ScalerBilinearY>("ScalerBilinearY", newHeight, by_height),
        stage<ScalerBilinearXY>("ScalerBilinearXY", newSize, by_size),
        stage<ScalerAreaX>("ScalerAreaX8", newWidth, ArmArea<OX_SCALER_FIXED_POINT_8S>()),
        stage<ScalerAreaX>("ScalerAreaX16", newWidth, ArmArea<OX_SCALER_FIXED_POINT_16S>()),
        stage<ScalerAreaY>("ScalerAreaY8", newHeight, ArmArea<OX_SCALER_FIXED_POINT_8S>()),
        stage<ScalerAreaY>("ScalerAreaY16", newHeight, ArmArea<OX_SCALER_FIXED_POINT_16S>()),
        stage<scaleAreaXY>("scaleAreaXY", newSize, ArmAreaXY(), TakenSources::Frames),
        convolutional<OX_SCALER_FIXED_POINT_8S>("ScalerConvolutional8"),
        convolutional<OX_SCALER_FIXED_POINT_16S>("ScalerConvolutional16"),
        stage<Scaler>("ScalerNearest", newSize, ArmScaler<OX_SCALE_NEAREST>()),
        stage<Scaler>("ScalerBilinear", newSize, ArmScaler<OX_SCALE_BILINEAR>()),
        stage<Scaler>("ScalerArea", newSize, ArmScaler<OX_SCALE_AREA>(), TakenSources::Any,
                      Inside::Chain),
    };
    return classes;
}

void PrintTo(StageClass const& stage, std::ostream* out) {
    *out << stage.name;
}

std::vector<StageClass> linkClasses() {
    std::vector<StageClass> classes;
    std::copy_if(stageClasses().begin(), stageClasses().end(), std::back_inserter(classes),
                 [](StageClass const& stage_class) { return stage_class.takes_producers; });
    return classes;
}

}  // namespace ox::test
