// Just enough drawing for the test card and the contact sheet, on an RGBA frame and clipped to it.
#ifndef KORFRAME_CANVAS_H
#define KORFRAME_CANVAS_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "image/Image.h"

namespace korframe {

struct Colour {
    std::uint8_t red;
    std::uint8_t green;
    std::uint8_t blue;
};

constexpr Colour Grey(std::size_t level) {
    return {static_cast<std::uint8_t>(level), static_cast<std::uint8_t>(level), static_cast<std::uint8_t>(level)};
}

struct Rectangle {
    std::size_t x;
    std::size_t y;
    std::size_t width;
    std::size_t height;
};

// The size of a letter of the built-in font at scale 1, and the distance from one to the next.
constexpr std::size_t kLetterWidth = 5;
constexpr std::size_t kLetterHeight = 7;
constexpr std::size_t kLetterAdvance = 6;

class Canvas {
  public:
    explicit Canvas(Frame& rgba) : frame_(rgba) {}

    void Dot(std::size_t x, std::size_t y, Colour colour);
    void Fill(const Rectangle& area, Colour colour);
    void Ring(std::size_t centreX, std::size_t centreY, std::size_t radius, std::size_t thickness, Colour colour);
    // An arrow that points up and fills the area.
    void ArrowUp(const Rectangle& area, Colour colour);
    // Capitals, digits and some punctuation. Lower case is drawn as capitals, anything else as a question mark.
    void Text(std::size_t x, std::size_t y, std::size_t scale, Colour colour, const std::string& text);
    // An RGB picture in any byte order, scaled to the area; pixels are averaged when it shrinks.
    void Picture(const Rectangle& area, const Frame& picture);

  private:
    Frame& frame_;
};

constexpr std::size_t TextWidth(std::size_t letters, std::size_t scale) {
    return letters == 0 ? 0 : (letters * kLetterAdvance - 1) * scale;
}

}  // namespace korframe

#endif
