// The values of options: how CLI11 reads those of the program's own types, and validators whose messages say what was
// expected instead of what was given.
#ifndef KORFRAME_VALUES_H
#define KORFRAME_VALUES_H

#include <CLI/CLI.hpp>
#include <string>

#include "image/PixelFormat.h"
#include "io/Open.h"
#include "pipeline/Overlay.h"
#include "pipeline/Pipeline.h"

namespace korframe {

// CLI11 finds these by the types of the variables that the options fill.
bool lexical_cast(const std::string& text, Size& size);
bool lexical_cast(const std::string& text, Position& position);
bool lexical_cast(const std::string& text, OutputRequest& request);
bool lexical_cast(const std::string& text, CropRequest& crop);
bool lexical_cast(const std::string& text, FrameRange& frames);
bool lexical_cast(const std::string& text, Strides& strides);

// "expected ..., not 'text'"
std::string Expected(const std::string& expected, const std::string& text);

CLI::Validator IsSize();
CLI::Validator IsPosition();
CLI::Validator IsOutput();
CLI::Validator IsCrop();
CLI::Validator IsFrameRange();
CLI::Validator IsStrides();
// "full" or "limited", which become true and false.
CLI::Validator IsRange();
CLI::Validator IsDecibels();
// Decimal only, where CLI::Range would also read octal and hexadecimal numbers.
CLI::Validator IsWholeNumber(unsigned long long least, unsigned long long most);
CLI::Validator IsSeconds(double most);
// Frames per second, which become a ratio as in Y4M: "25" becomes "25:1", and "29.97" becomes "30000:1001".
CLI::Validator IsRate();
// The name of a layout, which becomes its value in Layout.
CLI::Validator IsLayout(FormatTest pick = nullptr);
CLI::Validator IsAngle();
// Becomes its value in KorVideoFrameDitherLevel.
CLI::Validator IsDitherLevel();

// "OVERLAY[:X,Y[,ALPHA]]", where ALPHA is a number or "own".
OverlayRequest ParseOverlay(const std::string& option, const std::string& text);

}  // namespace korframe

#endif
