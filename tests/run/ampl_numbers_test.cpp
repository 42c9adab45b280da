/* ampl_numbers_test.cpp - coefficients of a text stub arrive as the doubles that are nearest to what the stub says, in
 * whatever form it says it. */
#include "run_support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <sstream>

static std::string printed(const char *format, int digits, double value)
{
    char text[512];
    std::snprintf(text, sizeof text, format, digits, value);
    return text;
}

/* Forms that are exact with one division, that are just beyond it, and that need every digit. */
static std::vector<std::string> forms()
{
    std::vector<std::string> all = {"1",
                                    "-7",
                                    "007",
                                    "5.",
                                    ".5",
                                    "-.25",
                                    "+3",
                                    "1e5",
                                    "1E-3",
                                    "-1.5e+02",
                                    "0.1",
                                    "9007199254740992",
                                    "9007199254740993",
                                    "9007199254740993.0",
                                    "90071992547409.93",
                                    "9999999999999999999",
                                    "18446744073709551616",
                                    "18446744073709551617.5",
                                    "123456789012345678901e-3",
                                    "0.00000000000000000000001",
                                    "0.0000000000000000000001",
                                    "1.0000000000000000000000",
                                    "1.00000000000000011102230246251565404",
                                    "8.5e-310",
                                    "4.9406564584124654e-324",
                                    "2.2250738585072011e-308"};
    std::mt19937_64 draw(8);
    std::uniform_real_distribution<double> share(-1.0, 1.0);
    for (int k = 0; k < 1000; ++k) {
        const int digits = static_cast<int>(draw() % 21);
        all.push_back(printed("%.*f", digits, share(draw) * std::pow(10.0, static_cast<int>(draw() % 12))));
        all.push_back(printed("%.*e", digits, share(draw) * std::pow(10.0, static_cast<int>(draw() % 40) - 20)));
        all.push_back(printed("%.*g", 17, share(draw)));
    }
    return all;
}

/* One row that has them all. */
static std::string stub_of(const std::vector<std::string> &numbers)
{
    const std::string num = std::to_string(numbers.size());
    std::ostringstream out;
    out << "g3 1 1 0\n " << num << " 1 1 0 0 0\n 0 0 0 0 0 0\n 0 0\n 0 0 0\n 0 0 0 1\n 0 0 0 0 0\n " << num
        << " 1\n 0 0\n 0 0 0 0 0\nC0\nn0\nO0 0\nn0\nr\n1 1\nb\n";
    for (size_t j = 0; j < numbers.size(); ++j) out << "3\n";
    out << "k" << numbers.size() - 1 << "\n";
    for (size_t j = 1; j < numbers.size(); ++j) out << j << "\n";
    out << "J0 " << num << "\n";
    for (size_t j = 0; j < numbers.size(); ++j) out << j << " " << numbers[j] << "\n";
    out << "G0 1\n0 1\n";
    return out.str();
}

/* The coefficients of row c1 in a file of ours, by columns x1, x2, ... */
static std::vector<double> row_in_mps(const std::string &text, size_t num)
{
    std::vector<double> values(num, 0.0);
    std::istringstream lines(text.substr(text.find("\nCOLUMNS") + 9));
    std::string line, column, row, value;
    while (std::getline(lines, line) && (line.empty() || line[0] == ' ')) {
        std::istringstream words(line);
        words >> column;
        while (words >> row >> value)
            if (row == "c1") values.at(std::stoul(column.substr(1)) - 1) = std::strtod(value.c_str(), nullptr);
    }
    return values;
}

TEST(ampl_numbers, every_digit_counts)
{
    const std::vector<std::string> numbers = forms();
    const temp_folder folder;
    file_write(folder.file("s.nl"), stub_of(numbers));
    process_options options;
    options.args = {"s", "data_tol_coef=0", "-a", "-x", "-out", "s.mps"}; /* small ones count as well */
    options.folder = folder.path;
    EXPECT_EQ(process_run(ZELOR_PROGRAM, options).status, 0);
    const std::vector<double> values = row_in_mps(file_read(folder.file("s.mps")), numbers.size());
    for (size_t j = 0; j < numbers.size(); ++j)
        EXPECT_EQ(values[j], std::strtod(numbers[j].c_str(), nullptr)) << numbers[j];
}
