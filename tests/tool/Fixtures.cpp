// Writes small files of the kinds that korframe reads but cannot write: `fixtures DIRECTORY`.
#include <cstdio>  // jpeglib.h uses FILE and size_t without including them

#include <jpeglib.h>
#include <png.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

std::string directory;

[[noreturn]] void Fail(const std::string& what) {
    std::fprintf(stderr, "fixtures: %s\n", what.c_str());
    std::exit(EXIT_FAILURE);
}

void WriteFile(const std::string& name, const Bytes& bytes) {
    const std::string path = directory + "/" + name;
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr || std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size() || std::fclose(file) != 0) {
        Fail(path + " cannot be written");
    }
}

struct PngKind {
    const char* name;
    int colourType;
    int depth;
    int interlacing;
};

void AppendBytes(png_structp png, png_bytep data, png_size_t count) {
    Bytes& file = *static_cast<Bytes*>(png_get_io_ptr(png));
    file.insert(file.end(), data, data + count);
}

void Flush(png_structp) {}

// Rows of `width` pixels. `alpha` is that of the palette's colours.
void WritePngRows(const PngKind& kind, std::uint32_t width, const std::vector<Bytes>& rows, double gamma = 0,
                  const Bytes& alpha = {}) {
    Bytes file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &file, AppendBytes, Flush);
    png_set_IHDR(png, info, width, static_cast<png_uint_32>(rows.size()), kind.depth, kind.colourType, kind.interlacing,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (kind.colourType == PNG_COLOR_TYPE_PALETTE) {
        const png_color palette[] = {{255, 0, 0}, {0, 0, 255}};
        png_set_PLTE(png, info, palette, 2);
    }
    if (!alpha.empty()) {
        png_set_tRNS(png, info, alpha.data(), static_cast<int>(alpha.size()), nullptr);
    }
    if (gamma > 0) {
        png_set_gAMA(png, info, gamma);
    }
    png_write_info(png, info);
    for (int pass = png_set_interlace_handling(png); pass > 0; --pass) {
        for (const Bytes& row : rows) {
            png_write_row(png, row.data());
        }
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    WriteFile(kind.name, file);
}

// Two rows, both the same.
void WritePng(const PngKind& kind, std::uint32_t width, const Bytes& row) {
    WritePngRows(kind, width, {row, row});
}

// 19x13 pixels of 16 bits, all different.
std::vector<Bytes> DeepRows(std::size_t samplesOfPixel) {
    std::vector<Bytes> rows(13, Bytes(19 * samplesOfPixel * 2));
    std::uint32_t noise = 1;
    for (Bytes& row : rows) {
        for (std::uint8_t& byte : row) {
            noise = noise * 1664525 + 1013904223;
            byte = static_cast<std::uint8_t>(noise >> 24);
        }
    }
    return rows;
}

// An application's marker of a JPEG file and what follows it.
struct Marker {
    int number;
    Bytes data;
};

struct Jpeg {
    JDIMENSION width, height;
    J_COLOR_SPACE space;
    std::size_t components;
    std::vector<Marker> markers;
};

// The file. setUp changes libjpeg's defaults; rowAt has the samples of a row.
template <class SetUp, class RowAt>
Bytes Encode(const Jpeg& picture, SetUp setUp, RowAt rowAt) {
    jpeg_compress_struct jpeg;
    jpeg_error_mgr errors;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    unsigned char* memory = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&jpeg, &memory, &size);
    jpeg.image_width = picture.width;
    jpeg.image_height = picture.height;
    jpeg.input_components = static_cast<int>(picture.components);
    jpeg.in_color_space = picture.space;
    jpeg_set_defaults(&jpeg);
    setUp(jpeg);
    jpeg_start_compress(&jpeg, TRUE);
    for (const Marker& marker : picture.markers) {
        jpeg_write_marker(&jpeg, JPEG_APP0 + marker.number, marker.data.data(),
                          static_cast<unsigned>(marker.data.size()));
    }
    while (jpeg.next_scanline < jpeg.image_height) {
        Bytes row = rowAt(jpeg.next_scanline);
        JSAMPROW rows = row.data();
        jpeg_write_scanlines(&jpeg, &rows, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    const Bytes file(memory, memory + size);
    std::free(memory);
    return file;
}

// 32x16 grey pixels, with a different shade in each quadrant: 240, 180 over 120, 60. An Exif field gives the
// orientation.
void WriteRotatedJpeg(const std::string& name, std::uint8_t orientation) {
    // Big-endian TIFF with one directory of one entry: tag 0x0112, a short, once.
    const Bytes exif = {'E', 'x',  'i', 'f', 0, 0, 'M', 'M', 0, 42,          0, 0, 0, 8, 0, 1,
                        1,   0x12, 0,   3,   0, 0, 0,   1,   0, orientation, 0, 0, 0, 0, 0, 0};
    const auto setUp = [](jpeg_compress_struct& jpeg) { jpeg_set_quality(&jpeg, 100, TRUE); };
    const auto rowAt = [](JDIMENSION line) {
        const bool upper = line < 8;
        Bytes row(16, upper ? 240 : 120);
        row.resize(32, upper ? 180 : 60);
        return row;
    };
    WriteFile(name, Encode({32, 16, JCS_GRAYSCALE, 1, {{1, exif}}}, setUp, rowAt));
}

// 16x16 pixels, all with the same components. With an index of further images, one follows.
void WriteJpeg(const std::string& name, J_COLOR_SPACE space, const Bytes& components, bool progressive,
               bool index = false) {
    Jpeg picture = {16, 16, space, components.size(), {}};
    if (index) {
        picture.markers.push_back({2, {'M', 'P', 'F', 0, 'I', 'I', 42, 0}});
    }
    const auto setUp = [&](jpeg_compress_struct& jpeg) {
        jpeg_set_quality(&jpeg, 100, TRUE);
        if (progressive) {
            jpeg_simple_progression(&jpeg);
        }
    };
    Bytes row;
    for (int pixel = 0; pixel < 16; ++pixel) {
        row.insert(row.end(), components.begin(), components.end());
    }
    Bytes file = Encode(picture, setUp, [&](JDIMENSION) { return row; });
    if (index) {
        const Bytes further = file;
        file.insert(file.end(), further.begin(), further.end());
    }
    WriteFile(name, file);
}

// The end of a scan: the next marker that is no part of its entropy-coded data.
std::size_t EndOfScan(const Bytes& file, std::size_t at) {
    const auto belongs = [](std::uint8_t marker) { return marker == 0 || (marker >= 0xd0 && marker <= 0xd7); };
    at += 2;
    while (file[at] != 0xff || belongs(file[at + 1])) {
        ++at;
    }
    return at;
}

// 16x16 black pixels in as many scans as wanted: the one of DC coefficients is repeated, which changes nothing.
void WriteScans(const std::string& name, std::size_t count) {
    const jpeg_scan_info scans[] = {{1, {0}, 0, 0, 0, 0}, {1, {0}, 1, 63, 0, 0}};
    const auto setUp = [&](jpeg_compress_struct& jpeg) {
        jpeg.scan_info = scans;
        jpeg.num_scans = 2;
    };
    const Bytes file = Encode({16, 16, JCS_GRAYSCALE, 1, {}}, setUp, [](JDIMENSION) { return Bytes(16, 0); });
    const Bytes start = {0xff, 0xda};
    const auto scan = std::search(file.begin(), file.end(), start.begin(), start.end());
    const auto at = static_cast<std::size_t>(scan - file.begin());
    const std::size_t end = EndOfScan(file, at);
    const Bytes first(scan, file.begin() + static_cast<std::ptrdiff_t>(end));
    Bytes repeated(file.begin(), scan);
    for (std::size_t left = count - 1; left > 0; --left) {
        repeated.insert(repeated.end(), first.begin(), first.end());
    }
    repeated.insert(repeated.end(), file.begin() + static_cast<std::ptrdiff_t>(end), file.end());
    WriteFile(name, repeated);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        Fail("expected the name of a directory");
    }
    directory = argv[1];

    WritePng({"rgb.png", PNG_COLOR_TYPE_RGB, 8, PNG_INTERLACE_NONE}, 2, {255, 0, 0, 255, 0, 0});
    WritePng({"rgb16.png", PNG_COLOR_TYPE_RGB, 16, PNG_INTERLACE_NONE}, 2,
             {255, 255, 0, 0, 0, 0, 255, 255, 0, 0, 0, 0});
    WritePng({"grey.png", PNG_COLOR_TYPE_GRAY, 8, PNG_INTERLACE_NONE}, 2, {255, 255});
    WritePng({"grey1.png", PNG_COLOR_TYPE_GRAY, 1, PNG_INTERLACE_NONE}, 2, {0xc0});
    WritePng({"palette.png", PNG_COLOR_TYPE_PALETTE, 1, PNG_INTERLACE_ADAM7}, 2, {0x00});
    WritePngRows({"key.png", PNG_COLOR_TYPE_PALETTE, 1, PNG_INTERLACE_NONE}, 2, {{0x40}, {0x40}}, 0, {255, 0});
    WritePng({"alpha.png", PNG_COLOR_TYPE_RGBA, 8, PNG_INTERLACE_NONE}, 2, {255, 0, 0, 255, 255, 255, 255, 0});
    WritePng({"half.png", PNG_COLOR_TYPE_RGBA, 8, PNG_INTERLACE_NONE}, 2, {255, 255, 255, 128, 255, 255, 255, 128});

    // Interlaced and not, with and without alpha.
    for (const std::size_t samples : {3u, 4u}) {
        const int type = samples == 4 ? PNG_COLOR_TYPE_RGBA : PNG_COLOR_TYPE_RGB;
        const std::string name = samples == 4 ? "deep-alpha" : "deep";
        WritePngRows({(name + ".png").c_str(), type, 16, PNG_INTERLACE_NONE}, 19, DeepRows(samples));
        WritePngRows({(name + "-interlaced.png").c_str(), type, 16, PNG_INTERLACE_ADAM7}, 19, DeepRows(samples));
    }
    Bytes deep = {'P', '6', ' ', '1', '9', ' ', '1', '3', ' ', '6', '5', '5', '3', '5', '\n'};
    for (const Bytes& row : DeepRows(3)) {
        deep.insert(deep.end(), row.begin(), row.end());
    }
    WriteFile("deep.ppm", deep);
    WritePngRows({"linear.png", PNG_COLOR_TYPE_GRAY, 8, PNG_INTERLACE_NONE}, 2, {{100, 200}, {100, 200}}, 1.0);
    WritePngRows({"srgb.png", PNG_COLOR_TYPE_GRAY, 8, PNG_INTERLACE_NONE}, 2, {{100, 200}, {100, 200}}, 0.45455);
    // As large as a picture may be, and larger.
    WritePngRows({"large.png", PNG_COLOR_TYPE_GRAY, 1, PNG_INTERLACE_NONE}, 8192,
                 std::vector<Bytes>(8192, Bytes(8192 / 8)));
    WritePngRows({"huge.png", PNG_COLOR_TYPE_GRAY, 1, PNG_INTERLACE_NONE}, 16384,
                 std::vector<Bytes>(16384, Bytes(16384 / 8)));

    WriteJpeg("indexed.jpg", JCS_RGB, {255, 255, 255}, false, true);
    WriteJpeg("grey.jpg", JCS_GRAYSCALE, {255}, false);
    WriteJpeg("white.jpg", JCS_RGB, {255, 255, 255}, false);
    WriteJpeg("black-progressive.jpg", JCS_RGB, {0, 0, 0}, true);
    WriteScans("scans-500.jpg", 500);
    WriteScans("scans-501.jpg", 501);
    WriteJpeg("cmyk.jpg", JCS_CMYK, {0, 0, 0, 0}, false);
    for (std::uint8_t orientation = 0; orientation <= 9; ++orientation) {
        WriteRotatedJpeg("rotated-" + std::to_string(orientation) + ".jpg", orientation);
    }
    return EXIT_SUCCESS;
}
