// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Prints times of the element oxconvertscale beside those of GStreamer's videoconvertscale, one
// thread each, from interleaved runs in one process: medians of microseconds for a buffer. The
// arguments are the files of the plugins.

#include <gst/check/gstharness.h>
#include <gst/video/video.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "median.h"

namespace {

constexpr int repetitions = 11;
constexpr double secondsPerRun = 0.1;

constexpr char const* elements[]{
    "oxconvertscale method=bilinear",
    "oxconvertscale",
    "videoconvertscale n-threads=1",
    "videoconvertscale n-threads=1 chroma-mode=none dither=none",
};

struct Task {
    char const* name;
    char const* in;
    char const* out;
};

constexpr char const* hd = ", width=1920, height=1080, framerate=30/1";

constexpr Task tasks[]{
    {"NV12 to RGB 640x360", "NV12", "format=RGB, width=640, height=360"},
    {"NV12 to BGR 640x360", "NV12", "format=BGR, width=640, height=360"},
    {"NV12 to I420 640x360", "NV12", "format=I420, width=640, height=360"},
    {"NV12 to NV12 640x360", "NV12", "format=NV12, width=640, height=360"},
    {"YUY2 to BGR 640x360", "YUY2", "format=BGR, width=640, height=360"},
    {"NV12 to BGR", "NV12", "format=BGR, width=1920, height=1080"},
    {"NV12 to I420", "NV12", "format=I420, width=1920, height=1080"},
    {"YUY2 to BGR", "YUY2", "format=BGR, width=1920, height=1080"},
    {"BGR to NV12", "BGR", "format=NV12, width=1920, height=1080"},
};

GstBuffer* randomBuffer(GstCaps const* caps) {
    GstVideoInfo info;
    gst_video_info_from_caps(&info, caps);
    GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, info.size, nullptr);
    GstMapInfo map;
    gst_buffer_map(buffer, &map, GST_MAP_WRITE);
    std::mt19937 random(1);
    for (gsize i = 0; i < map.size; ++i) {
        map.data[i] = static_cast<guint8>(random());
    }
    gst_buffer_unmap(buffer, &map);
    return buffer;
}

// An element that gets one buffer again and again.
class Contestant {
  public:
    Contestant(char const* element, Task const& task) : _harness(gst_harness_new_parse(element)) {
        GstCaps* const in =
            gst_caps_from_string((std::string("video/x-raw, format=") + task.in + hd).c_str());
        _buffer = randomBuffer(in);
        gst_harness_set_sink_caps(
            _harness, gst_caps_from_string((std::string("video/x-raw, ") + task.out).c_str()));
        gst_harness_set_src_caps(_harness, in);
    }
    Contestant(Contestant const&) = delete;
    Contestant& operator=(Contestant const&) = delete;
    ~Contestant() {
        gst_buffer_unref(_buffer);
        gst_harness_teardown(_harness);
    }

    // Runs for a while.
    void measure() {
        using Clock = std::chrono::steady_clock;
        Clock::time_point const start = Clock::now();
        std::chrono::duration<double> taken{};
        int count = 0;
        do {
            gst_buffer_unref(gst_harness_push_and_pull(_harness, gst_buffer_ref(_buffer)));
            ++count;
            taken = Clock::now() - start;
        } while (taken.count() < secondsPerRun);
        _times.push_back(1e6 * taken.count() / count);
    }

    double microseconds() const { return ox::benchmarks::median(_times); }

  private:
    GstHarness* _harness;
    GstBuffer* _buffer;
    std::vector<double> _times;
};

void run(Task const& task) {
    std::vector<std::unique_ptr<Contestant>> contestants;
    for (char const* const element : elements) {
        contestants.push_back(std::make_unique<Contestant>(element, task));
    }
    for (int i = 0; i < repetitions; ++i) {
        for (auto const& contestant : contestants) {
            contestant->measure();
        }
    }
    std::printf("| %s |", task.name);
    for (auto const& contestant : contestants) {
        std::printf(" %.0f |", contestant->microseconds());
    }
    std::printf("\n");
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    g_setenv("GST_REGISTRY_DISABLE", "yes", TRUE);
    gst_init(nullptr, nullptr);
    for (int i = 1; i < argc; ++i) {
        if (gst_plugin_load_file(argv[i], nullptr) == nullptr) {
            std::fprintf(stderr, "%s can't be loaded\n", argv[i]);
            return 1;
        }
    }
    std::printf("| 1920x1080 |");
    for (char const* const element : elements) {
        std::printf(" `%s` |", element);
    }
    std::printf("\n|---|---|---|---|---|\n");
    for (Task const& task : tasks) {
        run(task);
    }
    return 0;
}
