// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What the tool tells about files, formats and itself.
#include <sstream>

#include "library.h"
#include "ox_core/ox_exception.h"
#include "program.h"
#include "support/test_frame.h"

namespace oxcv::test {

namespace {

class TablesTest : public ProgramTest {};

// A row of `oxcv formats` as words.
struct Row {
    std::string letter, name, planes, chroma, bits, scales, warps;
    Words ways;
};

std::vector<Row> formatRows(Words const& options = {}) {
    std::istringstream text(run(join({"formats"}, options)).out);
    std::vector<Row> rows;
    std::string line;
    std::getline(text, line);  // heads
    while (std::getline(text, line) && !line.empty()) {
        std::istringstream words(line);
        Row row;
        words >> row.letter >> row.name >> row.planes >> row.chroma >> row.bits >> row.scales >>
            row.warps;
        for (std::string way; words >> way;) {
            row.ways.push_back(way);
        }
        rows.push_back(row);
    }
    return rows;
}

template <class Call>
bool works(Call call) {
    try {
        call();
        return true;
    } catch (ox::Exception const&) {
        return false;
    }
}

// By new backends each time: a used one remembers things, and takes pairs then that don't exist.
bool converts(std::string const& backend, ox::FrameFormat src, ox::FrameFormat dst) {
    return !takesFloatsForRedFirst(src, dst) && works([&] {
        Library(backend).inFormat(blankFrame(src, {8, 8}), dst);
    });
}

char way(std::string const& backend, ox::FrameFormat src, ox::FrameFormat dst) {
    if (src == dst) {
        return '=';
    }
    if (converts(backend, src, dst)) {
        return '1';
    }
    for (ox::FrameFormat const third : ox::test::allFormats()) {
        if (converts(backend, src, third) && converts(backend, third, dst)) {
            return '2';
        }
    }
    // Packed, and in the other order: two steps more, where there are these.
    bool const from_planes = src == ox::FRAME_RGB_PLANAR;
    if (takesFloatsForRedFirst(src, dst) && (from_planes || dst == ox::FRAME_RGB_PLANAR)) {
        ox::FrameFormat const first = from_planes ? ox::FRAME_RGB24 : ox::FRAME_BGR24;
        ox::FrameFormat const second = from_planes ? ox::FRAME_BGR24 : ox::FRAME_RGB24;
        return converts(backend, src, first) && converts(backend, second, dst) ? '3' : '.';
    }
    return '.';
}

char scales(std::string const& backend, ox::FrameFormat format, ox::ResizeMethod method) {
    bool const taken = works([&] {
        Library(backend).scaled(blankFrame(format, {8, 8}), {6, 6}, method);
    });
    return taken ? "nba"[method] : '.';
}

void expectRow(Row const& row, std::string const& backend, ox::FrameFormat format) {
    SCOPED_TRACE(backend + ": " + row.name);
    std::vector<ox::FrameFormat> const formats = ox::test::allFormats();
    std::string const letters{scales(backend, format, ox::ResizeNearestNeighbour),
                              scales(backend, format, ox::ResizeBilinear),
                              scales(backend, format, ox::ResizeArea)};
    EXPECT_EQ(row.scales, letters);
    ASSERT_EQ(row.ways.size(), formats.size());
    for (std::size_t k = 0; k < formats.size(); ++k) {
        EXPECT_EQ(row.ways[k], std::string(1, way(backend, format, formats[k])))
            << "to " << ox::toString(formats[k]);
    }
}

}  // namespace

TEST_F(TablesTest, FormatsTellsWhatTheBackendsTake) {
    std::vector<ox::FrameFormat> const formats = ox::test::allFormats();
    for (std::string const backend : backends) {
        std::vector<Row> const rows = formatRows({"--backend", backend});
        ASSERT_EQ(rows.size(), formats.size());
        for (std::size_t i = 0; i < rows.size(); ++i) {
            expectRow(rows[i], backend, formats[i]);
        }
    }
    EXPECT_EQ(run({"formats"}).out, run({"formats", "--backend", "simd"}).out);
}

TEST_F(TablesTest, FormatsTellsWhichAreWarped) {
    std::string ways;
    for (Row const& row : formatRows()) {
        ways += row.warps;
    }
    EXPECT_EQ(ways,
              "wwwww"
              "cccccccccc"
              "www"
              ".....");
    for (Row const& row : formatRows({"--backend", "base"})) {
        EXPECT_EQ(row.warps, ".") << row.name;
    }
}

TEST_F(TablesTest, FormatsListsThemAllInOrder) {
    std::vector<Row> const rows = formatRows();
    std::vector<ox::FrameFormat> const formats = ox::test::allFormats();
    ASSERT_EQ(rows.size(), formats.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ("FRAME_" + rows[i].name, ox::toString(formats[i]));
        ASSERT_EQ(rows[i].ways.size(), formats.size());
        EXPECT_EQ(rows[i].ways[i], "=");
        EXPECT_EQ(rows[i].letter, std::string(1, static_cast<char>('a' + i)));
    }
}

TEST_F(TablesTest, FormatsTellsWhatTheLibraryDoes) {
    enum : std::size_t { gray, rgb, rgb_planar, bgr, bgr_planar, i420, yv12, nv12 };
    std::vector<Row> const rows = formatRows();
    EXPECT_EQ(rows[nv12].planes, "2");
    EXPECT_EQ(rows[nv12].chroma, "4:2:0");
    EXPECT_EQ(rows[nv12].bits, "8");
    EXPECT_EQ(rows[nv12].scales, "nba");
    EXPECT_EQ(rows[nv12].ways[bgr], "1");
    EXPECT_EQ(rows[nv12].ways[rgb], "1");
    EXPECT_EQ(rows[nv12].ways[rgb_planar], "2");
    EXPECT_EQ(rows[gray].chroma, "-");
    EXPECT_EQ(rows[gray].ways[nv12], "1");
    EXPECT_EQ(rows[bgr].ways[gray], "1");
    EXPECT_EQ(rows[rgb_planar].ways[bgr], "2");
    EXPECT_EQ(rows.back().name, "BGR_32F_PLANAR");
    EXPECT_EQ(rows.back().bits, "32");
    EXPECT_EQ(rows.back().ways[bgr], "1");
    EXPECT_EQ(rows.back().ways[rgb], "2");
    EXPECT_EQ(rows.back().ways[rgb_planar], "3");
}

TEST_F(TablesTest, InfoTellsWhatAFileHolds) {
    std::string const frame = bytesOf(randomFrame(ox::FRAME_NV12, {5, 3}));
    Result const raw =
        run({"info", write("three.nv12", frame + frame + frame), "--input-size", "5x3"});
    EXPECT_EQ(raw.out,
              "kind     raw\nformat   NV12\nsize     5x3\nframes   3\n"
              "plane 0  5x3, 1 x 8 bits, 15 bytes\nplane 1  3x2, 2 x 8 bits, 12 bytes\n");
    Result const y4m = run({"info", "-"}, "YUV4MPEG2 W1 H1 F30:1 Cmono\nFRAME\n.");
    EXPECT_EQ(y4m.out,
              "kind     y4m\nformat   GRAY8\nsize     1x1\nframes   unknown\nrate     30:1\n"
              "plane 0  1x1, 1 x 8 bits, 1 bytes\n");
}

TEST_F(TablesTest, InfoCountsTheFramesOfAFile) {
    std::string const frame = bytesOf(randomFrame(ox::FRAME_BGR24, {6, 4}));
    struct Case {
        std::string name;
        std::string text;
    };
    for (auto const& [name, text] :
         {Case{"two.y4m", "kind     y4m\nformat   I420\nsize     6x4\nframes   2\nrate     25:1\n"},
          Case{"two.npy", "kind     npy\nformat   BGR24\nsize     6x4\nframes   2\n"},
          Case{"one.jpg", "kind     jpeg\nformat   BGR24\nsize     6x4\nframes   1\n"},
          Case{"one.png", "kind     png\nformat   BGR24\nsize     6x4\nframes   1\n"}}) {
        bool const two = name.starts_with("two");
        converted(two ? frame + frame : frame, rawInput(ox::FRAME_BGR24, {6, 4}), name);
        EXPECT_TRUE(run({"info", path(name)}).out.starts_with(text)) << name;
    }
}

TEST_F(TablesTest, HelpIsNoFailure) {
    for (Words const& call : {Words{"--help"}, Words{"convert", "--help"}, Words{"info", "-h"}}) {
        Result const result = run(call);
        EXPECT_EQ(result.status, 0);
        EXPECT_NE(result.out.find("Usage: oxcv"), std::string::npos);
        EXPECT_NE(result.out.find("Examples:"), std::string::npos);
        EXPECT_EQ(result.err, "");
    }
}

}  // namespace oxcv::test
