// What the tool tells about files, formats and itself.
#include <sstream>

#include "ox_core/ox_exception.h"
#include "ox_cv/ox_cv_backend_base.h"
#include "ox_cv/ox_cv_helpers.h"
#include "program.h"
#include "support/test_frame.h"

namespace oxcv::test {

namespace {

class TablesTest : public ProgramTest {};

// A row of `oxcv formats` as words.
struct Row {
    std::string letter, name, planes, chroma, bits, scales;
    Words ways;
};

std::vector<Row> formatRows() {
    std::istringstream text(run({"formats"}).out);
    std::vector<Row> rows;
    std::string line;
    std::getline(text, line);  // heads
    while (std::getline(text, line) && !line.empty()) {
        std::istringstream words(line);
        Row row;
        words >> row.letter >> row.name >> row.planes >> row.chroma >> row.bits >> row.scales;
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

bool converts(ox::FrameFormat src, ox::FrameFormat dst) {
    ox::Frame target = blankFrame(dst, {8, 8});
    return works([&] {
        ox::CvBackendBase().colorCvt(blankFrame(src, {8, 8}), target, ox::emptyRoi());
    });
}

char way(ox::FrameFormat src, ox::FrameFormat dst) {
    if (src == dst) {
        return '=';
    }
    if (converts(src, dst)) {
        return '1';
    }
    for (ox::FrameFormat const third : ox::test::allFormats()) {
        if (converts(src, third) && converts(third, dst)) {
            return '2';
        }
    }
    return '.';
}

bool scales(ox::FrameFormat format, ox::ResizeMethod method) {
    ox::Frame target = blankFrame(format, {6, 6});
    ox::CvBackendBase backend;
    backend.setIntProperty(1, static_cast<int>(method));
    return works([&] {
        backend.resize(blankFrame(format, {8, 8}), target, ox::emptyRoi(), ox::emptyRoi());
    });
}

}  // namespace

TEST_F(TablesTest, FormatsTellsWhatTheBackendTakes) {
    std::vector<ox::FrameFormat> const formats = ox::test::allFormats();
    std::vector<Row> const rows = formatRows();
    ASSERT_EQ(rows.size(), formats.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE(rows[i].name);
        std::string const letters{scales(formats[i], ox::ResizeNearestNeighbour) ? 'n' : '.',
                                  scales(formats[i], ox::ResizeBilinear) ? 'b' : '.',
                                  scales(formats[i], ox::ResizeArea) ? 'a' : '.'};
        EXPECT_EQ(rows[i].scales, letters);
        ASSERT_EQ(rows[i].ways.size(), formats.size());
        for (std::size_t k = 0; k < formats.size(); ++k) {
            EXPECT_EQ(rows[i].ways[k], std::string(1, way(formats[i], formats[k])))
                << "to " << rows[k].name;
        }
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
    EXPECT_EQ(rows[nv12].ways[rgb], "2");
    EXPECT_EQ(rows[nv12].ways[rgb_planar], ".");
    EXPECT_EQ(rows[gray].chroma, "-");
    EXPECT_EQ(rows[gray].ways[nv12], "1");
    EXPECT_EQ(rows[bgr].ways[gray], "1");
    EXPECT_EQ(rows[rgb_planar].ways[bgr], "2");
    EXPECT_EQ(rows.back().name, "BGR_32F_PLANAR");
    EXPECT_EQ(rows.back().bits, "32");
    EXPECT_EQ(rows.back().ways[bgr], ".");
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
