// The colour matrix of a conversion between RGB and YUV: one of the library's, or the user's from a file.
#ifndef KORFRAME_MATRIX_H
#define KORFRAME_MATRIX_H

#include <string>

#include "io/InputFile.h"
#include "Kor/Utils/SysDep/KorBaseTypes.h"

namespace korframe {

enum class MatrixKind { Bt601, Bt709, Own };

struct Matrix {
    MatrixKind kind = MatrixKind::Bt601;
    std::string name = "601";
    KorInt coefficients[3][3] = {};  // for Own: in units of 1/256
};

// What --help says about matrix files.
extern const char* const kMatrixFileHelp;

// "601", "709", either with "bt" or "BT." before it, or the name of a file.
Matrix LoadMatrix(const std::string& name);
// "BT.601", or the name of the file.
std::string NameOf(const Matrix& matrix);
Matrix ReadMatrix(InputFile& input);

}  // namespace korframe

#endif
