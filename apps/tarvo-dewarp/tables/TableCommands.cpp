#include "apps/tarvo-dewarp/tables/TableCommands.h"

#include "apps/tarvo-dewarp/LookupTable.h"
#include "apps/tarvo-dewarp/OptionValues.h"
#include "apps/tarvo-dewarp/OutputArgument.h"
#include "apps/tarvo-dewarp/PictureCoding.h"
#include "apps/tarvo-dewarp/WholeFile.h"
#include "apps/tarvo-dewarp/geometry/GeometryValues.h"
#include "apps/tarvo-dewarp/tables/RemapMap.h"
#include "apps/tarvo-dewarp/tables/TableProjection.h"

#include <memory>
#include <string>

namespace tarvo::apps {
namespace {

namespace fs = std::filesystem;

// Head and samples of the largest map, the larger of the two kinds of file per cell being the table.
constexpr std::uintmax_t largestMapFile = 4096 + 2 * maxTableCells;
constexpr std::uintmax_t largestTableFile = 8 + 6 * maxTableCells;

template<typename Decode>
auto readDecoded(const fs::path& path, std::uintmax_t largest, Decode decode) {
    const std::uintmax_t size = ordinaryFileSize(path);
    if (size > largest)
        throw FileError(path, "it is larger than any such file that can be read");
    const std::vector<std::uint8_t> bytes = readBeginning(path, static_cast<std::size_t>(size));
    try {
        return decode(bytes);
    } catch (const CodingError& error) {
        throw FileError(path, error.what());
    }
}

fs::path readTablesPath(const std::string& option, const std::string& text) {
    const fs::path path = pathFromText(text);
    if (!endsIn(path, u8".tables"))
        refuseValue(option, text, "the name of a file that ends in .tables");
    return path;
}

fs::path readMapPath(const std::string& option, const std::string& text) {
    const fs::path path = pathFromText(text);
    if (!endsIn(path, u8".pgm"))
        refuseValue(option, text, "the name of a file that ends in .pgm");
    return path;
}

TableProjection readProjection(const std::string& option, const std::string& text) {
    if (text == "rectilinear")
        return TableProjection::rectilinear;
    if (text == "cylindrical")
        return TableProjection::cylindrical;
    if (text == "equirectangular")
        return TableProjection::equirectangular;
    refuseValue(option, text, "one of rectilinear, cylindrical, equirectangular");
}

double readHorizontal(const std::string& option, const std::string& text) {
    return readNumber(option, text, 1.0, 360.0, "a number of degrees from 1 to 360");
}

double readVertical(const std::string& option, const std::string& text) {
    return readNumber(option, text, 1.0, 180.0, "a number of degrees from 1 to 180");
}

void addTablesOutput(CLI::App& command, fs::path& target) {
    addValue(command, "OUTPUT", target, readTablesPath, "FILE",
             "File of tables to write, as the component's SetCustomTransformData takes it;\n"
             "its name ends in .tables. An existing file is replaced.")
        ->required();
}

void addInputSize(CLI::App& command, PictureSize& target) {
    addValue(command, "--input-size", target, readSize, "WIDTHxHEIGHT",
             "Size of the pictures that are looked at, pixels.")
        ->required();
}

struct TablesSettings {
    fs::path output;
    TableView view;
};

// The records of the view are the geometry's.
geometry::PictureSize readPixels(const std::string& option, const std::string& text) {
    return geometryOf(readSize(option, text));
}

geometry::LensProfile readLens(const std::string& option, const std::string& text) {
    return geometryOf(readLensProfile(option, text));
}

geometry::TiltOrientation readMounting(const std::string& option, const std::string& text) {
    return geometryOf(readTiltOrientation(option, text));
}

struct RemapSettings {
    std::string table;
    fs::path output;
    fs::path x;
    fs::path y;
    PictureSize input{};
};

void convertFromRemap(const RemapSettings& settings) {
    const RemapMap x = readDecoded(settings.x, largestMapFile, decodeMap);
    const RemapMap y = readDecoded(settings.y, largestMapFile, decodeMap);
    if (x.width != y.width || x.height != y.height)
        throw FileError(settings.y, "it has not the size of the other map");
    checkTarget(settings.output);
    writeWholeFile(settings.output, encodeTable(tableOfMaps(x, y, settings.input)));
}

void convertToRemap(const RemapSettings& settings) {
    const RemapMaps maps =
        readDecoded(pathFromText(settings.table), largestTableFile,
                    [&](const auto& bytes) { return mapsOfTable(decodeTable(bytes), settings.input); });
    if (settings.x.lexically_normal() == settings.y.lexically_normal())
        throw UsageError("YMAP: the two maps need two files");
    // Both before either, so that a wrong second name does not leave half a pair.
    checkTarget(settings.x);
    checkTarget(settings.y);
    writeWholeFile(settings.x, encodeMap(maps.x));
    writeWholeFile(settings.y, encodeMap(maps.y));
}

} // namespace

Command addTablesCommand(CLI::App& program) {
    const auto settings = std::make_shared<TablesSettings>();
    TableView& view = settings->view;
    CLI::App& command =
        *program.add_subcommand("tables", "Make the lookup table of a view for the component's custom view.");
    addTablesOutput(command, settings->output);
    addValue(command, "--projection", view.projection, readProjection, "NAME",
             "rectilinear (default), the component's single view; cylindrical; or\nequirectangular.");
    addValue(command, "--grid", view.grid, readPixels, "WIDTHxHEIGHT",
             "Cells of the table, at most 33554432; the picture it makes has its shape.\nDefault 64x48.");
    addValue(command, "--input-size", view.input, readPixels, "WIDTHxHEIGHT",
             "Size of the fisheye picture, pixels. Default 2592x1944.");
    addValue(command, "--tilt-orientation", view.tiltOrientation, readMounting, "NAME",
             "How the camera is mounted: wall (default, as is undef), ceiling or desk.");
    addValue(command, "--lens-profile", view.lensProfile, readLens, "A,B,C",
             "Lens polynomial r = A*t^3 + B*t^2 + C*t: t is the angle from the lens axis in\n"
             "radians, r the distance from the picture's centre in picture heights.\n"
             "Default -0.022619,0.014994,0.368175.");
    addValue(command, "--pan", view.panDegrees, readAngle, "DEGREES",
             "Direction of the middle to the right; 0 by default.");
    addValue(command, "--tilt", view.tiltDegrees, readAngle, "DEGREES",
             "Direction of the middle upward. The default follows from the mounting.");
    addValue(command, "--field-of-view", view.fieldOfViewDegrees, readAngle, "DEGREES",
             "rectilinear: half the vertical angle of a view that has the input's shape, 2\n"
             "to 60. The default follows from the mounting.");
    addValue(command, "--horizontal-field-of-view", view.horizontalFieldOfViewDegrees, readHorizontal,
             "DEGREES", "The other projections: width of the picture, 1 to 360. Default 180.");
    addValue(command, "--vertical-field-of-view", view.verticalFieldOfViewDegrees, readVertical, "DEGREES",
             "Its height, 1 to 180, not beyond 90 degrees above or below the horizon, 89 in a\n"
             "cylinder. Default 60.");
    command.footer("Example: a cylinder around a camera on the ceiling\n"
                   "  tarvo-dewarp tables round.tables --projection cylindrical --grid 240x40 "
                   "--tilt-orientation ceiling --horizontal-field-of-view 360");
    return {&command, [settings](std::ostream&) {
                checkTarget(settings->output);
                writeWholeFile(settings->output, encodeTable(makeTable(settings->view)));
            }};
}

Command addTablesFromRemapCommand(CLI::App& program) {
    const auto settings = std::make_shared<RemapSettings>();
    CLI::App& command =
        *program.add_subcommand("tables-from-remap", "Make a lookup table out of a pair of remap maps.");
    addValue(command, "XMAP", settings->x, readMapPath, "FILE",
             "16-bit binary PGM picture: for every pixel of an output the column of the input\n"
             "pixel to take, as FFmpeg's filter remap reads it; its name ends in .pgm. A\n"
             "column or row beyond the input stays black.")
        ->required();
    addValue(command, "YMAP", settings->y, readMapPath, "FILE", "Likewise the row.")->required();
    addTablesOutput(command, settings->output);
    addInputSize(command, settings->input);
    command.footer("The table has a cell for every pixel of the maps. The component spreads the cells from\n"
                   "edge to edge of its output, which makes the picture wider by half a pixel at each side.\n"
                   "Example\n"
                   "  tarvo-dewarp tables-from-remap x.pgm y.pgm view.tables --input-size 2592x1944");
    return {&command, [settings](std::ostream&) { convertFromRemap(*settings); }};
}

Command addTablesToRemapCommand(CLI::App& program) {
    const auto settings = std::make_shared<RemapSettings>();
    CLI::App& command =
        *program.add_subcommand("tables-to-remap", "Make a pair of remap maps out of a lookup table.");
    command.add_option("INPUT", settings->table, "File with a single table, without partial weights.")
        ->type_name("FILE")
        ->required();
    addValue(command, "XMAP", settings->x, readMapPath, "FILE",
             "16-bit binary PGM picture to write, the columns of the input pixels to take;\n"
             "its name ends in .pgm. 65535 stands for black. An existing file is replaced.")
        ->required();
    addValue(command, "YMAP", settings->y, readMapPath, "FILE", "Likewise the rows.")->required();
    addInputSize(command, settings->input);
    command.footer(
        "The maps have a pixel for every cell, so a table for them wants a --grid of the output's\n"
        "size.\n"
        "Example\n"
        "  tarvo-dewarp tables view.tables --grid 1024x768 --pan 30\n"
        "  tarvo-dewarp tables-to-remap view.tables x.pgm y.pgm --input-size 2592x1944\n"
        "  ffmpeg -i fisheye.png -i x.pgm -i y.pgm -lavfi remap view.png");
    return {&command, [settings](std::ostream&) { convertToRemap(*settings); }};
}

} // namespace tarvo::apps
