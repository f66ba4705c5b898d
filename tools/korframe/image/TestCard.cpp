#include "image/TestCard.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "image/Canvas.h"

namespace korframe {

namespace {

constexpr Colour kWhite = Grey(255);
constexpr Colour kBlack = Grey(0);
// clang-format off
constexpr Colour kBars[] = {
    {255, 255, 255}, {255, 255, 0}, {0, 255, 255}, {0, 255, 0},
    {255, 0, 255},   {255, 0, 0},   {0, 0, 255},   {0, 0, 0},
};
// clang-format on

// Black and white blocks along every edge show a lost row or column; each corner has a colour of its own.
void DrawEdges(Canvas& canvas, std::size_t width, std::size_t height, std::size_t unit) {
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const bool inside = x >= unit && x + unit < width && y >= unit && y + unit < height;
            if (!inside) {
                canvas.Dot(x, y, (x / unit + y / unit) % 2 == 0 ? kWhite : kBlack);
            }
        }
    }
    const std::size_t mark = 2 * unit;
    canvas.Fill({0, 0, mark, mark}, {255, 0, 0});
    canvas.Fill({width - mark, 0, mark, mark}, {0, 255, 0});
    canvas.Fill({0, height - mark, mark, mark}, {0, 0, 255});
    canvas.Fill({width - mark, height - mark, mark, mark}, {255, 255, 0});
}

void DrawBars(Canvas& canvas, const Rectangle& area) {
    const std::size_t count = std::size(kBars);
    for (std::size_t bar = 0; bar < count; ++bar) {
        const std::size_t begin = area.width * bar / count;
        const std::size_t end = area.width * (bar + 1) / count;
        canvas.Fill({area.x + begin, area.y, end - begin, area.height}, kBars[bar]);
    }
}

void DrawRamp(Canvas& canvas, const Rectangle& area, std::size_t brightest) {
    for (std::size_t x = 0; x < area.width; ++x) {
        canvas.Fill({area.x + x, area.y, 1, area.height}, Grey(x * brightest / (area.width - 1)));
    }
}

// Four fields of lines: one and two pixels wide, vertical and horizontal.
void DrawGratings(Canvas& canvas, const Rectangle& area) {
    for (std::size_t y = 0; y < area.height; ++y) {
        for (std::size_t x = 0; x < area.width; ++x) {
            const std::size_t thickness = x < area.width / 2 ? 1 : 2;
            const std::size_t along = y < area.height / 2 ? x : y;
            canvas.Dot(area.x + x, area.y + y, along / thickness % 2 == 0 ? kWhite : kBlack);
        }
    }
}

void DrawName(Canvas& canvas, const Rectangle& area) {
    const std::size_t radius = std::min(area.width, area.height) / 2 - 1;
    const std::size_t centreX = area.x + area.width / 2;
    const std::size_t centreY = area.y + area.height / 2;
    canvas.Ring(centreX, centreY, radius, std::max<std::size_t>(radius / 12, 1), kWhite);
    const std::string name = "KOR";
    const std::size_t unscaled = std::max<std::size_t>(TextWidth(name.size(), 1), 1);
    const std::size_t scale = std::max<std::size_t>(radius * 3 / 2 / unscaled, 1);
    canvas.Text(centreX - TextWidth(name.size(), scale) / 2, centreY - kLetterHeight * scale / 2, scale, kWhite, name);
}

}  // namespace

Frame DrawTestCard(std::size_t width, std::size_t height) {
    Frame card(FormatOf(Layout::Rgba), width, height);
    Canvas canvas(card);
    canvas.Fill({0, 0, width, height}, Grey(96));
    const std::size_t unit = std::max<std::size_t>(std::min(width, height) / 48, 1);
    DrawEdges(canvas, width, height, unit);

    const Rectangle inner = {2 * unit, 2 * unit, width - 4 * unit, height - 4 * unit};
    const std::size_t bars = inner.height * 3 / 10;
    const std::size_t ramp = inner.height / 10;
    const std::size_t middle = inner.height - bars - 2 * ramp;
    DrawBars(canvas, {inner.x, inner.y, inner.width, bars});
    DrawRamp(canvas, {inner.x, inner.y + bars + middle, inner.width, ramp}, 255);
    DrawRamp(canvas, {inner.x, inner.y + bars + middle + ramp, inner.width, ramp}, 32);

    const std::size_t third = inner.width / 3;
    const std::size_t gap = middle / 8;
    const Rectangle field = {inner.x, inner.y + bars + gap, third, middle - 2 * gap};
    canvas.ArrowUp({field.x + third / 4, field.y, third / 2, field.height}, kWhite);
    DrawName(canvas, {field.x + third, field.y, third, field.height});
    DrawGratings(canvas, {field.x + 2 * third + third / 8, field.y, third * 3 / 4, field.height});
    return card;
}

}  // namespace korframe
