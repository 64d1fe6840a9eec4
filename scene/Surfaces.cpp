#include "scene/Surfaces.h"

#include "scene/Patterns.h"
#include "scene/Room.h"

#include <cmath>
#include <initializer_list>

namespace tarvo::scene {
namespace {

/// Ramps of the walls' patterns: three pixels of a five-megapixel fisheye picture at the far end of the room.
constexpr double soft = 0.025;

constexpr Colour white{0.95, 0.95, 0.92};
constexpr Colour cream{0.97, 0.93, 0.80};
constexpr Colour navy{0.08, 0.12, 0.28};
constexpr Colour orange{0.98, 0.50, 0.08};
constexpr Colour dark{0.16, 0.13, 0.12};

/// Lays a plate with a letter over `ground`; (u, v) are metres from the plate's centre.
Colour withLetter(const Colour& ground, char letter, double u, double v, const Colour& ink) {
    constexpr Area plate{-0.50, -0.52, 0.50, 0.52};
    if (!plate.grownBy(0.1).contains(u, v)) {
        return ground;
    }
    Colour colour = mix(ground, ink, softArea(u, v, plate.grownBy(0.05), soft));
    const double weave = softChecker(u, v, 0.065, 0.05);
    colour = mix(colour, (0.90 + 0.10 * weave) * cream, softArea(u, v, plate, soft));
    colour = mix(colour, ink, softLetter(letter, u, v, 0.80, soft));
    const double fromDot = std::hypot(u - 0.40, v + 0.42);
    return mix(colour, orange, 1.0 - softAbove(fromDot, 0.065, soft));
}

/// Skirting at the floor and a moulding at the ceiling, alike on all walls.
Colour withMouldings(const Colour& ground, double u, double v) {
    const double bottom = 1.0 - softAbove(v, 0.14, soft);
    const double top = softAbove(v, 2.86, soft);
    const double dentils = 0.80 + 0.20 * softSquareWave(u, 0.10, 0.05);
    Colour colour = mix(ground, (0.82 - 0.25 * softLines(v, 0.20, 0.03, soft)) * white, bottom);
    return mix(colour, dentils * white, top);
}

/// A window: sky, sun and hills behind panes, in a white frame.
Colour withWindow(const Colour& ground, double u, double v, const Area& opening, int panes) {
    if (!opening.grownBy(0.15).contains(u, v)) {
        return ground;
    }
    const double height = (v - opening.bottom) / (opening.top - opening.bottom);
    Colour outside = mix({0.80, 0.90, 0.97}, {0.30, 0.56, 0.88}, height);
    const double clouds = smoothNoise(u / 0.30, v / 0.12, 11) * smoothNoise(u / 0.12, v / 0.07, 12);
    outside = mix(outside, white, softAbove(clouds, 0.38, 0.35));
    const double sun = std::hypot(u - opening.right + 0.35, v - opening.top + 0.28);
    outside = mix(outside, {1.0, 0.93, 0.55}, 1.0 - softAbove(sun, 0.13, 0.05));
    const double farHill = opening.bottom + 0.48 + 0.10 * std::sin(3.1 * u) + 0.05 * std::sin(7.0 * u + 1.0);
    outside = mix({0.42, 0.58, 0.62}, outside, softAbove(v, farHill, 0.03));
    const double nearHill = opening.bottom + 0.26 + 0.09 * std::sin(2.3 * u + 2.0);
    const double meadow = 0.80 + 0.40 * smoothNoise(u / 0.07, v / 0.05, 13);
    outside = mix(meadow * Colour{0.33, 0.58, 0.25}, outside, softAbove(v, nearHill, 0.03));

    const double paneWidth = (opening.right - opening.left) / panes;
    const double bars =
        std::fmax(softLines(u - opening.left, paneWidth, 0.07, soft),
                  softLines(v - opening.bottom, 0.5 * (opening.top - opening.bottom), 0.06, soft));
    Colour colour = mix(ground, dark, 0.35 * softArea(u, v, opening.grownBy(0.12), 0.06));
    colour = mix(colour, white, softArea(u, v, opening.grownBy(0.08), soft));
    colour = mix(colour, outside, softArea(u, v, opening, soft));
    return mix(colour, white, bars * softArea(u, v, opening, soft));
}

Colour withDoor(const Colour& ground, double u, double v) {
    constexpr Area leaf{doorWest, -0.1, doorEast, doorTop};
    if (!leaf.grownBy(0.3).contains(u, v)) {
        return ground;
    }
    const double grain = smoothNoise(u / 0.035, v / 0.35, 21);
    Colour wood = (0.80 + 0.35 * grain) * Colour{0.50, 0.30, 0.16};
    for (const Area& panel : {Area{doorWest + 0.16, 0.25, doorEast - 0.16, 0.95},
                              Area{doorWest + 0.16, 1.15, doorEast - 0.16, 1.90}}) {
        wood = mix(wood, 0.55 * wood, softArea(u, v, panel, soft));
        wood = mix(wood, (0.95 + 0.25 * grain) * Colour{0.56, 0.35, 0.19},
                   softArea(u, v, panel.grownBy(-0.05), soft));
    }
    const double fromKnob = std::hypot(u - doorEast + 0.08, v - 1.05);
    wood = mix(wood, {0.95, 0.80, 0.35}, 1.0 - softAbove(fromKnob, 0.04, soft));
    const Colour framed = mix(ground, white, softArea(u, v, leaf.grownBy(doorFrame), soft));
    return mix(framed, wood, softArea(u, v, leaf, soft));
}

/// A frame with rings on the left and slanted stripes on the right.
Colour withPainting(const Colour& ground, double u, double v, const Area& canvas) {
    if (!canvas.grownBy(0.2).contains(u, v)) {
        return ground;
    }
    const double across = u - 0.5 * (canvas.left + canvas.right);
    const double upwards = v - 0.5 * (canvas.bottom + canvas.top);
    const double rings = 0.5 + 0.5 * std::cos(std::hypot(across + 0.25, upwards + 0.05) * 42.0);
    const double stripes = 0.5 + 0.5 * std::cos((across + 0.6 * upwards) * 50.0);
    const Colour left = mix({0.93, 0.80, 0.25}, {0.75, 0.15, 0.20}, rings);
    const Colour right = mix({0.15, 0.35, 0.62}, {0.55, 0.80, 0.85}, stripes);
    const Colour art = mix(left, right, softAbove(across - 0.4 * upwards, 0.15, 0.05));
    Colour colour = mix(ground, 0.6 * ground, softArea(u - 0.03, v + 0.03, canvas.grownBy(0.09), 0.06));
    colour = mix(colour, {0.35, 0.22, 0.10}, softArea(u, v, canvas.grownBy(0.08), soft));
    return mix(colour, art, softArea(u, v, canvas, soft));
}

Colour withBookshelf(const Colour& ground, double u, double v, const Area& shelf) {
    if (!shelf.grownBy(0.1).contains(u, v)) {
        return ground;
    }
    constexpr double shelfHeight = 0.36;
    constexpr double bookWidth = 0.085;
    const double above = v - shelf.bottom;
    const auto row = cellOf(above, shelfHeight);
    const auto book = cellOf(u, bookWidth);
    const double inRow = above - shelfHeight * static_cast<double>(row);
    const double hue = cellValue(book, row, 31);
    const double height = 0.24 + 0.07 * cellValue(book, row, 32);
    const Colour spine{0.30 + 0.60 * hue, 0.25 + 0.50 * cellValue(book, row, 33), 0.75 - 0.60 * hue};
    // The dark gap between the books also hides the jump from one book's colour to the next one's.
    const double body = 1.0 - softLines(u, bookWidth, 0.012, soft);
    const double title = 0.55 * softSpan(inRow, 0.14, 0.19, soft);
    Colour colour = mix(dark, mix(spine, cream, title), body * (1.0 - softAbove(inRow, height, soft)));
    const Colour wood{0.52, 0.34, 0.19};
    colour = mix(colour, wood, softLines(above, shelfHeight, 0.05, soft));
    colour = mix(wood, colour, softArea(u, v, shelf.grownBy(-0.04), soft));
    return mix(ground, colour, softArea(u, v, shelf, soft));
}

} // namespace

Colour northWall(double u, double v) {
    const double diamonds = softChecker(u + v, u - v, 0.20, 0.10);
    const double plaster = smoothNoise(u / 0.07, v / 0.07, 1);
    Colour colour = mix({0.28, 0.50, 0.60}, {0.42, 0.64, 0.72}, diamonds);
    colour = (0.90 + 0.20 * plaster) * colour;
    colour = withWindow(colour, u, v, {1.0, 0.95, 3.1, 2.35}, 3);
    colour = withLetter(colour, 'N', u + 0.35, v - 1.75, navy);
    return withDoor(withMouldings(colour, u, v), u, v);
}

Colour eastWall(double u, double v) {
    constexpr double course = 0.14;
    constexpr double brickWidth = 0.40;
    const auto row = cellOf(v, course);
    const double shifted = (row % 2 == 0) ? u : u + 0.5 * brickWidth;
    const double tone = cellValue(cellOf(shifted, brickWidth), row, 2);
    const double rough = smoothNoise(u / 0.05, v / 0.05, 3);
    const double mortar =
        std::fmax(softLines(v, course, 0.03, soft), softLines(shifted, brickWidth, 0.03, soft));
    const Colour brick = (0.72 + 0.36 * tone + 0.14 * rough) * Colour{0.68, 0.33, 0.25};
    Colour colour = mix(brick, {0.82, 0.76, 0.70}, mortar);
    colour = withBookshelf(colour, u, v, {-2.55, 0.0, -1.0, 2.24});
    colour = withLetter(colour, 'E', u - 0.1, v - 1.85, {0.35, 0.08, 0.06});
    colour = withWindow(colour, u, v, {1.1, 1.0, 2.3, 2.3}, 2);
    return withMouldings(colour, u, v);
}

Colour southWall(double u, double v) {
    constexpr double board = 0.25;
    const double groove = softLines(u, board, 0.02, soft);
    const double tone = cellValue(cellOf(u, board), 0, 4);
    const double grain = smoothNoise(u / 0.045, v / 0.50, 5);
    Colour colour = (0.78 + 0.16 * tone + 0.22 * grain) * Colour{0.86, 0.68, 0.40};
    colour = mix(colour, {0.38, 0.27, 0.14}, groove);
    colour = withPainting(colour, u, v, {1.2, 1.1, 3.0, 2.2});
    colour = withLetter(colour, 'S', u, v - 1.2, {0.36, 0.20, 0.05});
    colour = withWindow(colour, u, v, {-3.2, 0.95, -1.3, 2.35}, 2);
    return withMouldings(colour, u, v);
}

Colour westWall(double u, double v) {
    const double stripes = 0.5 + 0.5 * softSquareWave(u, 0.16, 0.06);
    const double leaves = smoothNoise(u / 0.08, v / 0.11, 6);
    Colour upper = (0.86 + 0.26 * leaves) * mix({0.45, 0.62, 0.40}, {0.62, 0.76, 0.52}, stripes);
    const double panels = softArea(u - 0.5 * std::floor(u / 0.5), v, {0.08, 0.24, 0.42, 0.82}, soft);
    const Colour lower = mix({0.86, 0.86, 0.80}, {0.62, 0.68, 0.60}, panels);
    Colour colour = mix(lower, upper, softAbove(v, 0.95, soft));
    colour = mix(colour, {0.50, 0.40, 0.28}, softSpan(v, 0.93, 0.99, soft));
    colour = withWindow(colour, u, v, {-2.5, 1.1, -0.8, 2.4}, 2);
    colour = withLetter(colour, 'W', u - 0.1, v - 1.85, {0.10, 0.28, 0.14});
    colour = withPainting(colour, u, v, {1.1, 1.3, 2.4, 2.2});
    return withMouldings(colour, u, v);
}

Colour floorTiles(double u, double v) {
    constexpr double tile = 0.40;
    const double marble = smoothNoise(u / 0.09 + 0.6 * v, v / 0.06, 7);
    const double fields = softChecker(u, v, tile, soft);
    Colour colour = (0.86 + 0.26 * marble) * mix({0.42, 0.37, 0.34}, {0.80, 0.74, 0.65}, fields);
    const double joints = std::fmax(softLines(u, tile, 0.012, soft), softLines(v, tile, 0.012, soft));
    colour = mix(colour, {0.50, 0.46, 0.42}, joints);

    constexpr Area rug{-1.6, -1.05, 1.6, 1.05};
    if (rug.grownBy(0.1).contains(u, v)) {
        const double diamonds = softChecker(u + v, u - v, 0.22, 0.06);
        const double weave = smoothNoise(u / 0.05, v / 0.05, 8);
        const Colour middle = (0.88 + 0.22 * weave) * mix({0.60, 0.16, 0.18}, {0.84, 0.46, 0.26}, diamonds);
        colour = mix(colour, navy, softArea(u, v, rug, soft));
        colour = mix(colour, {0.90, 0.80, 0.58}, softArea(u, v, rug.grownBy(-0.09), soft));
        colour = mix(colour, middle, softArea(u, v, rug.grownBy(-0.20), soft));
    }
    return withLetter(colour, 'F', u, v + 1.75, {0.28, 0.10, 0.36});
}

Colour ceilingTiles(double u, double v) {
    constexpr double tile = 0.60;
    const double joints = std::fmax(softLines(u, tile, 0.03, soft), softLines(v, tile, 0.03, soft));
    const double holes = softChecker(u, v, 0.10, 0.06);
    const double stains = smoothNoise(u / 0.12, v / 0.12, 9);
    Colour colour = (0.72 + 0.12 * holes + 0.10 * stains) * Colour{0.98, 0.97, 0.93};
    colour = mix(colour, {0.45, 0.45, 0.46}, joints);
    for (const Area& lamp : {Area{-2.4, -1.2, -1.8, 1.2}, Area{1.8, -1.2, 2.4, 1.2}}) {
        const double louvres = softLines(v, 0.15, 0.03, soft);
        const Colour light = mix({1.0, 0.99, 0.92}, {0.74, 0.74, 0.70}, louvres);
        colour = mix(colour, light, softArea(u, v, lamp.grownBy(-0.03), soft));
    }
    return withLetter(colour, 'C', u, v - 1.5, {0.05, 0.30, 0.36});
}

} // namespace tarvo::scene
