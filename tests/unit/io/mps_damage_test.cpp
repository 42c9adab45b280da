/* The MPS reader on damaged files: cut at every byte, and with bytes changed. It must come back with a code. */
#include "mps_support.h"

#include "fuzz/reader_fuzz.h"

#include <algorithm>

using namespace test_mps;

namespace
{
const char seed[] =
    "* seed\nNAME seed\nOBJSENSE\n    MAX\nOBJNAME\n o\nROWS\n N  o\n L  a\n G  b\n E  c\n N  f\nCOLUMNS\n"
    "    x         o              1.5   a              2\n    x         b             -3   c           1e2\n"
    "    M         'MARKER'                 'INTORG'\n    y         a              4\n"
    "    M         'MARKER'                 'INTEND'\n    z         c              5   f              1\n"
    "    x         f              1\nRHS\n    R         o             -6   a              7\nRANGES\n"
    "    R         a              8   c             -9\nBOUNDS\n UP B         x             10\n"
    " MI B         y\n BV B         z\nQUADOBJ\n    x         x              2\n"
    "QCMATRIX  b\n    x         y              1\n    y         x              1\nENDATA\n";

const char fixed_seed[] =
    "NAME          f\nROWS\n N  THE COST\n L  ROW 1\nCOLUMNS\n"
    "    COL 1     THE COST           1.0   ROW 1              2.0\nRHS\n"
    "    R         ROW 1              3.0\nBOUNDS\n UP B 1       COL 1              4.0\nENDATA\n";

int32_t fuzz_mps(const std::string &text) { return fuzz_reader(mps_read, mps_write, text.data(), text.size()); }

std::vector<std::string> seeds()
{
    std::vector<std::string> texts = {seed, fixed_seed};
    for (const char *name : {"qcqp/meanvarx.mps", "reader/qpsreader_rim_obj.qps"})
        if (std::filesystem::exists(std::string(ZELOR_DATA_DIR "/") + name))
            texts.push_back(file_text(std::string(ZELOR_DATA_DIR "/") + name));
    return texts;
}

TEST(MpsDamage, SeedsAreGood)
{
    for (const std::string &text : seeds()) EXPECT_EQ(fuzz_mps(text), ZLR_RES_OK) << text;
}

/* Whether a text without ENDATA ends at a line end in RHS, RANGES or BOUNDS, behind all of the matrix. */
bool ends_in_vectors(const std::string &cut)
{
    if (cut.empty() || cut.back() != '\n') return false;
    size_t header = cut.size() - 1; /* of the last line that begins a section */
    do header = cut.rfind('\n', header - 1);
    while (cut[header + 1] == ' ');
    const std::string word = cut.substr(header + 1, cut.find('\n', header + 1) - header - 1);
    return word == "RHS" || word == "RANGES" || word == "BOUNDS";
}

/* A cut that leaves ENDATA leaves a whole file, and one behind the matrix that leaves whole lines is taken with a
 * warning; any other is an error. */
TEST(MpsDamage, CutAtEveryByte)
{
    for (const std::string &text : seeds())
        for (size_t size = 0; size < text.size(); ++size) {
            const std::string cut(text, 0, size); /* a copy of its own size: reading behind it is found */
            const bool is_whole = cut.rfind("\nENDATA") != std::string::npos || ends_in_vectors(cut);
            ASSERT_EQ(fuzz_mps(cut) == ZLR_RES_OK, is_whole) << cut;
        }
}

TEST(MpsDamage, BytesChanged)
{
    static const char changes[] = {'\0', ' ', '\n', '\t', '9', '-', '$', '*', 'E', '\'', '\x80'};
    for (const std::string &text : seeds()) {
        const size_t step = text.size() > 2000 ? 31 : 2;
        for (size_t at = 0; at < text.size(); at += step)
            for (const char change : changes) {
                std::string damaged = text;
                damaged[at] = change;
                (void)fuzz_mps(damaged); /* checks the model where one is read */
            }
    }
}

/* Lines taken out, doubled and put elsewhere. */
TEST(MpsDamage, LinesMoved)
{
    for (const std::string &text : seeds()) {
        if (text.size() > 2000) continue;
        std::vector<std::string> lines;
        for (size_t at = 0; at < text.size();) {
            const size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
            lines.push_back(text.substr(at, end - at));
            at = end;
        }
        for (size_t from = 0; from < lines.size(); ++from)
            for (size_t to = 0; to < lines.size(); ++to)
                for (const bool keep : {false, true}) {
                    std::string moved;
                    for (size_t k = 0; k < lines.size(); ++k) {
                        if (k == to) moved += lines[from];
                        if (k != from || keep) moved += lines[k];
                    }
                    (void)fuzz_mps(moved);
                }
    }
}
}  // namespace
