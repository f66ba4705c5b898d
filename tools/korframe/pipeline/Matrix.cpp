#include "pipeline/Matrix.h"

#include <sstream>
#include <string>
#include <vector>

#include "io/Errors.h"
#include "io/Numbers.h"

namespace korframe {

namespace {

// A weight of 256.0: beyond any colour space, and small enough that no sum in the library wraps.
constexpr long long kLargest = 65536;

constexpr std::size_t kLargestFile = 65536;
constexpr std::size_t kSide = 3;

}  // namespace

const char* const kMatrixFileHelp =
    "A matrix FILE has three lines of three whole numbers in units of 1/256 (256 is 1.0); # begins a comment.\n"
    "  capture from RGB:  the rows make Y, U, V; each has the weights of red, green, blue\n"
    "  rendering to RGB:  the rows make R, G, B; each has the factors of Y - 16, U - 128, V - 128\n"
    "                     (the factor of Y in the first row scales luma for all three)\n";

Matrix LoadMatrix(const std::string& name) {
    for (const char* const prefix : {"", "bt", "bt.", "BT", "BT."}) {
        if (name == prefix + std::string("601")) {
            return {MatrixKind::Bt601, "601"};
        }
        if (name == prefix + std::string("709")) {
            return {MatrixKind::Bt709, "709"};
        }
    }
    try {
        InputFile input(name);
        return ReadMatrix(input);
    } catch (const Error& error) {
        throw Error(error.Status(), std::string("--matrix ") + error.what());
    }
}

std::string NameOf(const Matrix& matrix) {
    return matrix.kind == MatrixKind::Own ? matrix.name : "BT." + matrix.name;
}

Matrix ReadMatrix(InputFile& input) {
    const std::vector<std::uint8_t> bytes = input.ReadAll(kLargestFile, "three lines of three numbers");
    std::istringstream lines(std::string(bytes.begin(), bytes.end()));
    Matrix matrix = {MatrixKind::Own, input.Name()};
    const std::string limit = std::to_string(kLargest);
    const std::string expected =
        "expected a whole number from -" + limit + " to " + limit + ", where 256 is 1.0, not '";
    std::size_t lineNumber = 1;
    std::size_t row = 0;
    const auto fail = [&](std::size_t at, const std::string& what) {
        FailFile(input.Name(),
                 "line " + std::to_string(lineNumber) + ", column " + std::to_string(at + 1) + ": " + what);
    };
    for (std::string line; std::getline(lines, line); ++lineNumber) {
        const std::string content = line.substr(0, line.find('#'));
        std::istringstream words(content);
        std::size_t column = 0;
        for (std::string word; words >> word; ++column) {
            const std::size_t end = words.eof() ? content.size() : static_cast<std::size_t>(words.tellg());
            const std::size_t at = end - word.size();
            if (row == kSide || column == kSide) {
                fail(at, row == kSide ? "a fourth row; expected 3" : "a fourth number; expected 3 in a row");
            }
            const std::optional<long long> value = ParseSigned(word);
            if (!value || *value < -kLargest || *value > kLargest) {
                fail(at, expected + word + "'");
            }
            matrix.coefficients[row][column] = static_cast<KorInt>(*value);
        }
        if (column > 0 && column < kSide) {
            fail(line.size(), "the row ends after " + std::to_string(column) + "; expected 3 numbers");
        }
        row += column > 0 ? 1 : 0;
    }
    if (row < kSide) {
        fail(0, "expected three rows, found " + std::to_string(row));
    }
    return matrix;
}

}  // namespace korframe
