// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The tool's readers: bytes as a PNG, JPEG, Y4M, npy or raw file. Two readers of the same bytes
// give the same frames, one into frames of its own and one into a frame that is kept.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "failure.h"
#include "fuzz/pictures.h"
#include "fuzz/targets.h"
#include "image_io.h"
#include "ox_core/ox_exception.h"

namespace ox::fuzz {

namespace {

// A file in memory.
class MemoryFile {
  public:
    explicit MemoryFile(std::span<std::uint8_t const> bytes) : _number(memfd_create("input", 0)) {
        if (_number < 0 ||
            write(_number, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
            fail("there is no file in memory");
        }
    }
    MemoryFile(MemoryFile const&) = delete;
    MemoryFile& operator=(MemoryFile const&) = delete;
    ~MemoryFile() { close(_number); }

    std::string path() const { return "/proc/self/fd/" + std::to_string(_number); }

  private:
    int _number;
};

constexpr int mostFrames = 4;
constexpr std::int64_t mostPixels = 1 << 14;

bool same(Frame const& a, Frame const& b) {
    FrameLayout const& layout = a.layout();
    if (a.format() != b.format() || a.size() != b.size()) {
        return false;
    }
    for (int p = 0; p < layout.planeCount; ++p) {
        for (int y = 0; y < layout.plane[p].height; ++y) {
            unsigned char const* const row = a.planeData(p) + y * layout.plane[p].stride;
            if (!std::equal(row, row + layout.plane[p].rowBytes,
                            b.planeData(p) + y * b.layout().plane[p].stride)) {
                return false;
            }
        }
    }
    return true;
}

struct Taken {
    std::vector<Frame> frames;
    std::string failure;
};

Taken take(oxcv::InputRequest const& request, bool kept) {
    Taken taken;
    try {
        oxcv::OpenedInput const input = oxcv::openInput(request);
        oxcv::checkPixels(oxcv::nameOf(request), input.reader->info().size, mostPixels);
        Frame frame;
        while (static_cast<int>(taken.frames.size()) < mostFrames && input.reader->read(frame)) {
            Frame copy;
            frame.copyTo(copy);
            taken.frames.push_back(copy);
            if (!kept) {
                frame.clear();
            }
        }
        static_cast<void>(input.reader->fractionRead());
    } catch (oxcv::Failure const& failure) {
        taken.failure = failure.what();
    } catch (oxcv::UsageError const& failure) {
        taken.failure = failure.what();
    } catch (Exception const& failure) {
        taken.failure = failure.what();
    }
    return taken;
}

}  // namespace

// The first byte decides how the rest is read: files behind a zero are read as what they are.
void readers(Input& input) {
    constexpr char const* kinds[]{"", "png", "jpeg", "y4m", "npy", "raw"};
    std::uint8_t const kind = input.byte();
    oxcv::InputRequest request;
    request.kind = kinds[kind % 8 < 6 ? kind % 8 : 0];
    request.tolerant = kind / 8 % 2 == 1;
    if (request.kind == "raw" || kind / 16 % 4 == 1) {
        request.format = formatOf(drawNamedFormat(input));
        request.size = {input.between(1, 20), input.between(1, 20)};
        for (int& stride : request.strides) {
            stride = input.oneIn(4) ? input.between(0, 100) : 0;
        }
    }
    MemoryFile const file(input.rest());
    request.path = file.path();
    Taken const first = take(request, false);
    Taken const second = take(request, true);
    if (first.failure != second.failure || first.frames.size() != second.frames.size()) {
        fail("\"%s\" at first, then \"%s\"", first.failure.c_str(), second.failure.c_str());
    }
    for (std::size_t i = 0; i < first.frames.size(); ++i) {
        if (!same(first.frames[i], second.frames[i])) {
            fail("frame %zu differs at the second time", i);
        }
    }
}

}  // namespace ox::fuzz
