// What the tool tells about files, formats and itself.
#include <sstream>

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

}  // namespace

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

TEST_F(TablesTest, HelpIsNoFailure) {
    for (Words const& call : {Words{"--help"}, Words{"convert", "--help"}, Words{"info", "-h"}}) {
        Result const result = run(call);
        EXPECT_EQ(result.status, 0);
        EXPECT_NE(result.out.find("Usage: oxcv"), std::string::npos);
        EXPECT_EQ(result.err, "");
    }
    EXPECT_NE(run({"--help"}).out.find("Examples:"), std::string::npos);
}

}  // namespace oxcv::test
