// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Fills a network's input from each frame of a camera, out of the driver's own buffers.
///
///     v4l2_capture /dev/video0 100                # a hundred frames
///     v4l2_capture frames.yuyv 640x480 YUYV       # a file, where there is no camera
///     v4l2_capture                                # a gray frame
///
/// For cameras that keep a frame in one buffer, as those on USB do.

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "ox_core/ox_core.h"
#include "ox_cv/ox_frame_to_tensor.h"
#include "ox_interop/ox_v4l2.h"

namespace {

/// Where frames come from.
class Source {
  public:
    Source() = default;
    Source(Source const&) = delete;
    Source& operator=(Source const&) = delete;
    virtual ~Source() = default;
    virtual v4l2_format const& format() const = 0;
    /// The next frame's memory, until the next call; null behind the last one.
    virtual void* next() = 0;
};

class Camera : public Source {
  public:
    explicit Camera(char const* path) : _device(open(path, O_RDWR)) {
        require(_device >= 0, path);
        try {
            negotiate();
            start();
        } catch (...) {
            release();
            throw;
        }
    }
    Camera(Camera const&) = delete;
    Camera& operator=(Camera const&) = delete;
    ~Camera() override { release(); }

    v4l2_format const& format() const override { return _format; }

    void* next() override {
        if (_held) {
            control(VIDIOC_QBUF, &_buffer, "VIDIOC_QBUF");
        }
        _buffer = buffer(0);
        control(VIDIOC_DQBUF, &_buffer, "VIDIOC_DQBUF");
        _held = true;
        return _maps.at(_buffer.index).start;
    }

  private:
    struct Map {
        void* start;
        std::size_t bytes;
    };

    static void require(bool holds, char const* what) {
        if (!holds) {
            throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
        }
    }

    void control(unsigned long request, void* argument, char const* name) const {
        int result = -1;
        do {
            result = ioctl(_device, request, argument);
        } while (result == -1 && errno == EINTR);
        require(result != -1, name);
    }

    static v4l2_buffer buffer(unsigned index) {
        v4l2_buffer buffer{};
        buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        buffer.memory = V4L2_MEMORY_MMAP;
        buffer.index = index;
        return buffer;
    }

    // [negotiate]
    /// Keeps what the camera is set to, unless the library doesn't know it.
    void negotiate() {
        _format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        control(VIDIOC_G_FMT, &_format, "VIDIOC_G_FMT");
        if (ox::interop::frameFormatOfV4l2(_format.fmt.pix.pixelformat) == ox::FRAME_FORMAT_NONE) {
            _format.fmt.pix.pixelformat = V4L2_PIX_FMT_YUYV;
            _format.fmt.pix.field = V4L2_FIELD_NONE;
            control(VIDIOC_S_FMT, &_format, "VIDIOC_S_FMT");
        }
    }
    // [negotiate]

    void start() {
        v4l2_requestbuffers request{};
        request.count = 4;
        request.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        request.memory = V4L2_MEMORY_MMAP;
        control(VIDIOC_REQBUFS, &request, "VIDIOC_REQBUFS");
        for (unsigned i = 0; i < request.count; ++i) {
            v4l2_buffer one = buffer(i);
            control(VIDIOC_QUERYBUF, &one, "VIDIOC_QUERYBUF");
            void* const start = mmap(nullptr, one.length, PROT_READ | PROT_WRITE, MAP_SHARED,
                                     _device, static_cast<off_t>(one.m.offset));
            require(start != MAP_FAILED, "mmap");
            _maps.push_back({start, one.length});
            control(VIDIOC_QBUF, &one, "VIDIOC_QBUF");
        }
        int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        control(VIDIOC_STREAMON, &type, "VIDIOC_STREAMON");
    }

    void release() {
        int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        ioctl(_device, VIDIOC_STREAMOFF, &type);
        for (Map const& map : _maps) {
            munmap(map.start, map.bytes);
        }
        close(_device);
    }

    int _device;
    v4l2_format _format{};
    std::vector<Map> _maps;
    v4l2_buffer _buffer{};
    bool _held = false;
};

/// A file of frames, or a gray one without a file, in rows without gaps.
class File : public Source {
  public:
    File(char const* path, unsigned width, unsigned height, std::uint32_t fourcc)
        : _is_file(path != nullptr) {
        ox::FrameLayout const layout(
            ox::interop::frameFormatOfV4l2(fourcc),
            {static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)}, 1);
        if (layout.planeCount == 0) {
            throw std::runtime_error("the fourcc isn't known");
        }
        _bytes.assign(layout.totalBytes(), 128);
        _format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        _format.fmt.pix.width = width;
        _format.fmt.pix.height = height;
        _format.fmt.pix.pixelformat = fourcc;
        _format.fmt.pix.sizeimage = static_cast<std::uint32_t>(_bytes.size());
        if (_is_file) {
            _file.open(path, std::ios::binary);
        }
    }

    v4l2_format const& format() const override { return _format; }

    void* next() override {
        if (!_is_file) {
            return _bytes.data();
        }
        _file.read(reinterpret_cast<char*>(_bytes.data()),
                   static_cast<std::streamsize>(_bytes.size()));
        return _file ? _bytes.data() : nullptr;
    }

  private:
    bool _is_file;
    std::ifstream _file;
    v4l2_format _format{};
    std::vector<unsigned char> _bytes;
};

// [loop]
ox::TensorRecipe recipeFor(v4l2_format const& format) {
    ox::TensorRecipe recipe;
    recipe.width = recipe.height = 640;
    recipe.fit = ox::TENSOR_FIT_LETTERBOX;
    std::fill_n(recipe.scale, 3, 1.0F / 255.0F);
    ox::interop::ColourMeaning const colour = ox::interop::colourOf(format);
    recipe.matrix = colour.matrix;
    recipe.range = colour.range;
    return recipe;
}

void run(Source& source, int frames) {
    ox::FrameToTensor to_tensor;
    to_tensor.reuse(recipeFor(source.format()));
    ox::Tensor input;
    input.reuse(to_tensor.layout(1), ox::DeviceContext::cpuContext());
    int done = 0;
    for (void* memory = nullptr; done < frames && (memory = source.next()) != nullptr; ++done) {
        // [frame]
        ox::Frame const frame = ox::interop::frameOf(source.format(), &memory);
        to_tensor.run(frame, ox::Rect{}, input, 0);
        // [frame]
        // ... run the network on input.data() ...
        float const middle = reinterpret_cast<float const*>(input.data())[320 * 640 + 320];
        std::printf("%s of %dx%d, middle %.4f\n", ox::toString(frame.format()), frame.width(),
                    frame.height(), static_cast<double>(middle));
    }
    if (done == 0) {
        throw std::runtime_error("there is no frame");
    }
}
// [loop]

std::unique_ptr<Source> openFile(char const* path, char const* size, std::string const& letters) {
    unsigned width = 0;
    unsigned height = 0;
    if (std::sscanf(size, "%ux%u", &width, &height) != 2 || letters.size() != 4) {
        return nullptr;
    }
    return std::make_unique<File>(path, width, height,
                                  v4l2_fourcc(letters[0], letters[1], letters[2], letters[3]));
}

}  // namespace

int main(int count, char** arguments) {
    try {
        std::unique_ptr<Source> source;
        int frames = 1;
        if (count == 1) {
            source = openFile(nullptr, "1280x720", "NV12");
        } else if (count == 3 && (frames = std::atoi(arguments[2])) > 0) {
            source = std::make_unique<Camera>(arguments[1]);
        } else if (count == 4) {
            frames = 1 << 30;
            source = openFile(arguments[1], arguments[2], arguments[3]);
        }
        if (!source) {
            std::fputs("usage: v4l2_capture [/dev/videoN COUNT | FILE WIDTHxHEIGHT FOURCC]\n",
                       stderr);
            return 2;
        }
        run(*source, frames);
        return 0;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "v4l2_capture: %s\n", error.what());
        return 1;
    }
}
