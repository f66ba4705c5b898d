#include "image/Canvas.h"

#include <algorithm>
#include <cctype>

namespace korframe {

namespace {

// A letter: seven rows from the top, with the leftmost of five columns in bit 4.
struct Letter {
    char character;
    std::uint8_t rows[kLetterHeight];
};

// clang-format off
constexpr Letter kLetters[] = {
    {'?', {0x0e, 0x11, 0x01, 0x02, 0x04, 0x00, 0x04}},
    {' ', {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}},
    {'A', {0x0e, 0x11, 0x11, 0x1f, 0x11, 0x11, 0x11}}, {'B', {0x1e, 0x11, 0x11, 0x1e, 0x11, 0x11, 0x1e}},
    {'C', {0x0e, 0x11, 0x10, 0x10, 0x10, 0x11, 0x0e}}, {'D', {0x1e, 0x11, 0x11, 0x11, 0x11, 0x11, 0x1e}},
    {'E', {0x1f, 0x10, 0x10, 0x1e, 0x10, 0x10, 0x1f}}, {'F', {0x1f, 0x10, 0x10, 0x1e, 0x10, 0x10, 0x10}},
    {'G', {0x0e, 0x11, 0x10, 0x17, 0x11, 0x11, 0x0f}}, {'H', {0x11, 0x11, 0x11, 0x1f, 0x11, 0x11, 0x11}},
    {'I', {0x0e, 0x04, 0x04, 0x04, 0x04, 0x04, 0x0e}}, {'J', {0x07, 0x02, 0x02, 0x02, 0x02, 0x12, 0x0c}},
    {'K', {0x11, 0x12, 0x14, 0x18, 0x14, 0x12, 0x11}}, {'L', {0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x1f}},
    {'M', {0x11, 0x1b, 0x15, 0x15, 0x11, 0x11, 0x11}}, {'N', {0x11, 0x11, 0x19, 0x15, 0x13, 0x11, 0x11}},
    {'O', {0x0e, 0x11, 0x11, 0x11, 0x11, 0x11, 0x0e}}, {'P', {0x1e, 0x11, 0x11, 0x1e, 0x10, 0x10, 0x10}},
    {'Q', {0x0e, 0x11, 0x11, 0x11, 0x15, 0x12, 0x0d}}, {'R', {0x1e, 0x11, 0x11, 0x1e, 0x14, 0x12, 0x11}},
    {'S', {0x0f, 0x10, 0x10, 0x0e, 0x01, 0x01, 0x1e}}, {'T', {0x1f, 0x04, 0x04, 0x04, 0x04, 0x04, 0x04}},
    {'U', {0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x0e}}, {'V', {0x11, 0x11, 0x11, 0x11, 0x11, 0x0a, 0x04}},
    {'W', {0x11, 0x11, 0x11, 0x15, 0x15, 0x15, 0x0a}}, {'X', {0x11, 0x11, 0x0a, 0x04, 0x0a, 0x11, 0x11}},
    {'Y', {0x11, 0x11, 0x0a, 0x04, 0x04, 0x04, 0x04}}, {'Z', {0x1f, 0x01, 0x02, 0x04, 0x08, 0x10, 0x1f}},
    {'0', {0x0e, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0e}}, {'1', {0x04, 0x0c, 0x04, 0x04, 0x04, 0x04, 0x0e}},
    {'2', {0x0e, 0x11, 0x01, 0x02, 0x04, 0x08, 0x1f}}, {'3', {0x1f, 0x02, 0x04, 0x02, 0x01, 0x11, 0x0e}},
    {'4', {0x02, 0x06, 0x0a, 0x12, 0x1f, 0x02, 0x02}}, {'5', {0x1f, 0x10, 0x1e, 0x01, 0x01, 0x11, 0x0e}},
    {'6', {0x06, 0x08, 0x10, 0x1e, 0x11, 0x11, 0x0e}}, {'7', {0x1f, 0x01, 0x02, 0x04, 0x08, 0x08, 0x08}},
    {'8', {0x0e, 0x11, 0x11, 0x0e, 0x11, 0x11, 0x0e}}, {'9', {0x0e, 0x11, 0x11, 0x0f, 0x01, 0x02, 0x0c}},
    {'.', {0x00, 0x00, 0x00, 0x00, 0x00, 0x0c, 0x0c}}, {',', {0x00, 0x00, 0x00, 0x00, 0x0c, 0x04, 0x08}},
    {':', {0x00, 0x0c, 0x0c, 0x00, 0x0c, 0x0c, 0x00}}, {'-', {0x00, 0x00, 0x00, 0x1f, 0x00, 0x00, 0x00}},
    {'+', {0x00, 0x04, 0x04, 0x1f, 0x04, 0x04, 0x00}}, {'/', {0x00, 0x01, 0x02, 0x04, 0x08, 0x10, 0x00}},
    {'(', {0x02, 0x04, 0x08, 0x08, 0x08, 0x04, 0x02}}, {')', {0x08, 0x04, 0x02, 0x02, 0x02, 0x04, 0x08}},
};
// clang-format on

const Letter& FindLetter(char character) {
    const char capital = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    for (const Letter& letter : kLetters) {
        if (letter.character == capital) {
            return letter;
        }
    }
    return kLetters[0];
}

// The samples of `whole` that belong to part `index` of `parts`; at least one.
struct Span {
    Span(std::size_t index, std::size_t parts, std::size_t whole)
        : begin(index * whole / parts), end(std::max((index + 1) * whole / parts, begin + 1)) {}
    std::size_t begin;
    std::size_t end;
};

Colour Average(const Frame& picture, const Span& columns, const Span& rows) {
    const Channels rgb = picture.Format().rgb;
    std::size_t red = 0;
    std::size_t green = 0;
    std::size_t blue = 0;
    for (std::size_t y = rows.begin; y < rows.end; ++y) {
        for (std::size_t x = columns.begin; x < columns.end; ++x) {
            const std::uint8_t* pixel = picture.Pixel(x, y);
            red += pixel[rgb.red];
            green += pixel[rgb.green];
            blue += pixel[rgb.blue];
        }
    }
    const std::size_t count = (columns.end - columns.begin) * (rows.end - rows.begin);
    return {static_cast<std::uint8_t>((red + count / 2) / count),
            static_cast<std::uint8_t>((green + count / 2) / count),
            static_cast<std::uint8_t>((blue + count / 2) / count)};
}

}  // namespace

void Canvas::Dot(std::size_t x, std::size_t y, Colour colour) {
    if (x < frame_.Width() && y < frame_.Height()) {
        std::uint8_t* pixel = frame_.Pixel(x, y);
        pixel[0] = colour.red;
        pixel[1] = colour.green;
        pixel[2] = colour.blue;
        pixel[3] = 255;
    }
}

void Canvas::Fill(const Rectangle& area, Colour colour) {
    for (std::size_t y = area.y; y < area.y + area.height; ++y) {
        for (std::size_t x = area.x; x < area.x + area.width; ++x) {
            Dot(x, y, colour);
        }
    }
}

void Canvas::Ring(std::size_t centreX, std::size_t centreY, std::size_t radius, std::size_t thickness, Colour colour) {
    const std::size_t inner = radius > thickness ? radius - thickness : 0;
    for (std::size_t dy = 0; dy <= radius; ++dy) {
        for (std::size_t dx = 0; dx <= radius; ++dx) {
            const std::size_t distance = dx * dx + dy * dy;
            if (distance <= radius * radius && distance >= inner * inner) {
                Dot(centreX + dx, centreY + dy, colour);
                Dot(centreX - dx, centreY + dy, colour);
                Dot(centreX + dx, centreY - dy, colour);
                Dot(centreX - dx, centreY - dy, colour);
            }
        }
    }
}

void Canvas::ArrowUp(const Rectangle& area, Colour colour) {
    const std::size_t head = std::max<std::size_t>(area.height / 2, 1);
    for (std::size_t row = 0; row < head; ++row) {
        const std::size_t width = std::max<std::size_t>(area.width * row / head, 1);
        Fill({area.x + (area.width - width) / 2, area.y + row, width, 1}, colour);
    }
    const std::size_t shaft = std::max<std::size_t>(area.width / 3, 1);
    Fill({area.x + (area.width - shaft) / 2, area.y + head, shaft, area.height - head}, colour);
}

void Canvas::Text(std::size_t x, std::size_t y, std::size_t scale, Colour colour, const std::string& text) {
    for (const char character : text) {
        const Letter& letter = FindLetter(character);
        for (std::size_t row = 0; row < kLetterHeight; ++row) {
            for (std::size_t column = 0; column < kLetterWidth; ++column) {
                if ((letter.rows[row] >> (kLetterWidth - 1 - column) & 1) != 0) {
                    Fill({x + column * scale, y + row * scale, scale, scale}, colour);
                }
            }
        }
        x += kLetterAdvance * scale;
    }
}

void Canvas::Picture(const Rectangle& area, const Frame& picture) {
    for (std::size_t y = 0; y < area.height; ++y) {
        const Span rows(y, area.height, picture.Height());
        for (std::size_t x = 0; x < area.width; ++x) {
            Dot(area.x + x, area.y + y, Average(picture, Span(x, area.width, picture.Width()), rows));
        }
    }
}

}  // namespace korframe
