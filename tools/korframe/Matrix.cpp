#include "Matrix.h"

#include <cctype>
#include <cstdlib>
#include <string>
#include <vector>

#include "Errors.h"
#include "Parse.h"

namespace korframe {

namespace {

// A weight of 256.0: beyond any colour space, and small enough that no sum of the library's wraps.
constexpr unsigned long long kLargest = 65536;

constexpr std::size_t kLargestFile = 65536;
constexpr std::size_t kRows = 3;
constexpr std::size_t kColumns = 3;

struct Word {
    std::string text;
    std::size_t column;  // counted from 1
};

std::vector<Word> SplitLine(const std::string& line) {
    std::vector<Word> words;
    const std::size_t end = line.find('#') == std::string::npos ? line.size() : line.find('#');
    for (std::size_t at = 0; at < end;) {
        if (std::isspace(static_cast<unsigned char>(line[at])) != 0) {
            ++at;
            continue;
        }
        const std::size_t begin = at;
        while (at < end && std::isspace(static_cast<unsigned char>(line[at])) == 0) {
            ++at;
        }
        words.push_back({line.substr(begin, at - begin), begin + 1});
    }
    return words;
}

class MatrixReader {
  public:
    explicit MatrixReader(const std::string& name)
        : name_(name) {}

    void Line(const std::string& line) {
        ++line_;
        const std::vector<Word> words = SplitLine(line);
        if (words.empty()) {
            return;
        }
        if (rows_ == kRows) {
            Fail(words[0].column, "a fourth row; a matrix has three");
        }
        if (words.size() > kColumns) {
            Fail(words[kColumns].column, "a fourth number; a row has three");
        }
        for (std::size_t column = 0; column < words.size(); ++column) {
            matrix_.coefficients[rows_][column] = Number(words[column]);
        }
        if (words.size() < kColumns) {
            Fail(line.size() + 1, "the row ends after " + std::to_string(words.size()) + "; it needs three numbers");
        }
        ++rows_;
    }

    Matrix Finish() {
        if (rows_ < kRows) {
            ++line_;
            Fail(1, "the file ends after " + std::to_string(rows_) + " rows; a matrix has three");
        }
        matrix_.kind = MatrixKind::Own;
        matrix_.name = name_;
        return matrix_;
    }

  private:
    KorInt Number(const Word& word) const {
        const bool negative = word.text[0] == '-';
        const bool sign = negative || word.text[0] == '+';
        const std::optional<unsigned long long> value = ParseNumber(word.text.substr(sign ? 1 : 0));
        if (!value || *value > kLargest) {
            Fail(word.column, word.text + " is no whole number from -" + std::to_string(kLargest) + " to " +
                                  std::to_string(kLargest) + ", where 256 stands for 1.0");
        }
        const auto magnitude = static_cast<KorInt>(*value);
        return negative ? -magnitude : magnitude;
    }

    [[noreturn]] void Fail(std::size_t column, const std::string& what) const {
        FailFile(name_, "line " + std::to_string(line_) + ", column " + std::to_string(column) + ": " + what);
    }

    std::string name_;
    Matrix matrix_;
    std::size_t line_ = 0;
    std::size_t rows_ = 0;
};

}  // namespace

const char* const kMatrixFileHelp =
    "A matrix FILE has three lines of three whole numbers in units of 1/256 (256 is 1.0); # begins a comment.\n"
    "  capture from RGB:  the rows make Y, U, V; in each the weights of red, green, blue\n"
    "  rendering to RGB:  the rows make R, G, B; in each the factors of Y - 16, U - 128, V - 128\n"
    "                     (the factor of Y in the first row scales luma for all three)\n";

Matrix ParseMatrix(const std::string& text) {
    Matrix matrix;
    matrix.name = text;
    if (text == "601") {
        return matrix;
    }
    if (text == "709") {
        matrix.kind = MatrixKind::Bt709;
        return matrix;
    }
    try {
        InputFile input(text);
        return ReadMatrix(input);
    } catch (const Error& error) {
        throw Error(error.Status(), std::string("--matrix ") + error.what());
    }
}

Matrix ReadMatrix(InputFile& input) {
    MatrixReader reader(input.Name());
    std::string line;
    for (const std::uint8_t byte : input.ReadAll(kLargestFile, "a matrix has three lines of three numbers")) {
        if (byte == '\n') {
            reader.Line(line);
            line.clear();
        } else {
            line += static_cast<char>(byte);
        }
    }
    if (!line.empty()) {
        reader.Line(line);
    }
    return reader.Finish();
}

}  // namespace korframe
