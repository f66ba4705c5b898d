#include "io/RawFile.h"

#include <cstring>
#include <optional>

#include "io/Errors.h"
#include "io/SizeChecks.h"

namespace korframe {

namespace {

// The rows of a plane, each of which may be padded. A block of M420 has three of them.
struct PlaneRows {
    std::size_t bytes;
    std::size_t count;
};

PlaneRows RowsOfPlane(const PixelFormat& format, std::size_t plane, std::size_t width, std::size_t height) {
    if (format.layout == Layout::M420) {
        return {width, height / 2 * 3};
    }
    return {format.planes[plane].Pitch(width), format.planes[plane].Rows(height)};
}

// Completes what the user gave.
std::vector<Stride> StridesOf(const std::vector<Stride>& given, const PixelFormat& format, std::size_t width,
                              std::size_t height) {
    if (given.size() > format.planeCount) {
        FailUsage("--stride: " + std::to_string(given.size()) + " numbers, but " + format.name + " has " +
                  std::to_string(format.planeCount) + (format.planeCount == 1 ? " plane" : " planes"));
    }
    std::vector<Stride> strides = given;
    for (std::size_t plane = 0; plane < format.planeCount; ++plane) {
        const PlaneRows rows = RowsOfPlane(format, plane, width, height);
        if (plane == strides.size()) {
            strides.push_back({format.planes[plane].Pitch(given[0].bytes), 0});
        }
        Stride& stride = strides[plane];
        stride.rows = stride.rows == 0 ? rows.count : stride.rows;
        if (stride.bytes < rows.bytes || stride.rows < rows.count) {
            FailUsage("--stride: plane " + std::to_string(plane + 1) + " of " + SizeText(width, height) + " " +
                      format.name + " has " + std::to_string(rows.count) + " rows of " + std::to_string(rows.bytes) +
                      " bytes; expected at least as much, not " + std::to_string(stride.rows) + " rows of " +
                      std::to_string(stride.bytes));
        }
    }
    return strides;
}

std::size_t BytesOf(const std::vector<Stride>& strides) {
    std::size_t bytes = 0;
    for (const Stride& stride : strides) {
        bytes += stride.bytes * stride.rows;
    }
    return bytes;
}

// As on the command line.
std::string TextOf(const std::vector<Stride>& strides, const PixelFormat& format, std::size_t width,
                   std::size_t height) {
    std::string text;
    for (std::size_t plane = 0; plane < strides.size(); ++plane) {
        text += (plane == 0 ? "" : ",") + std::to_string(strides[plane].bytes);
        if (strides[plane].rows != RowsOfPlane(format, plane, width, height).count) {
            text += "x" + std::to_string(strides[plane].rows);
        }
    }
    return text;
}

std::size_t RoundUp(std::size_t value, std::size_t unit) {
    return (value + unit - 1) / unit * unit;
}

// Padding that would explain the size of a file: rows rounded up to a power of two, and luma to an even height.
std::optional<std::vector<Stride>> GuessStrides(std::uint64_t size, const PixelFormat& format, std::size_t width,
                                                std::size_t height) {
    for (std::size_t unit = 4; unit <= 256; unit *= 2) {
        for (const bool evenRows : {false, true}) {
            std::vector<Stride> strides;
            for (std::size_t plane = 0; plane < format.planeCount; ++plane) {
                const PlaneRows rows = RowsOfPlane(format, plane, width, height);
                const bool addsRow = evenRows && plane == 0 && format.planeCount > 1;
                strides.push_back({RoundUp(rows.bytes, unit), addsRow ? RoundUp(rows.count, 2) : rows.count});
            }
            const std::size_t frameBytes = BytesOf(strides);
            if (frameBytes != 0 && size % frameBytes == 0) {
                return strides;
            }
        }
    }
    return std::nullopt;
}

}  // namespace

void ReadFrameBytes(InputFile& input, std::uint8_t* bytes, std::size_t count, std::uint64_t number) {
    const std::size_t got = input.Read(bytes, count);
    if (got < count) {
        throw BrokenStream(input.Name() + ": frame " + std::to_string(number) + " is truncated: " +
                           std::to_string(count - got) + " of its " + std::to_string(count) + " bytes are missing");
    }
}

RawSource::RawSource(std::unique_ptr<InputFile> input, const PixelFormat& format, std::size_t width, std::size_t height,
                     const Strides& strides)
    : input_(std::move(input)) {
    info_.name = input_->Name();
    info_.raw = true;
    info_.format = &format;
    info_.width = width;
    info_.height = height;
    info_.alpha = format.HasAlpha();
    CheckSize(info_.name, width, height);
    CheckParity(info_.name, format, width, height);
    bytesInFile_ = format.FrameBytes(width, height);
    if (!strides.planes.empty()) {
        strides_ = StridesOf(strides.planes, format, width, height);
        bytesInFile_ = BytesOf(strides_);
    }
    if (!input_->Size() || bytesInFile_ == 0) {
        return;
    }
    info_.frames = *input_->Size() / bytesInFile_;
    if (strides.planes.empty() && *input_->Size() % bytesInFile_ != 0) {
        if (const auto guess = GuessStrides(*input_->Size(), format, width, height)) {
            SayNote("note: " + info_.name + ": its " + std::to_string(*input_->Size()) +
                    " bytes are no whole number of " + SizeText(width, height) + " " + format.name +
                    " frames, but would be one if rows are padded; for that add --stride " +
                    TextOf(*guess, format, width, height));
        }
    }
}

bool RawSource::Read(Frame& frame) {
    if (input_->Peek(1).empty()) {
        if (framesRead_ == 0) {
            FailFile(info_.name, "is empty; expected frames of " + std::to_string(bytesInFile_) + " bytes");
        }
        return false;
    }
    frame.Reset(*info_.format, info_.width, info_.height);
    ++framesRead_;
    if (strides_.empty()) {
        ReadFrameBytes(*input_, frame.Data(), frame.Size(), framesRead_);
        return true;
    }
    padded_.resize(bytesInFile_);
    ReadFrameBytes(*input_, padded_.data(), padded_.size(), framesRead_);
    const std::uint8_t* from = padded_.data();
    std::uint8_t* to = frame.Data();
    for (std::size_t plane = 0; plane < strides_.size(); ++plane) {
        const PlaneRows rows = RowsOfPlane(*info_.format, plane, info_.width, info_.height);
        for (std::size_t row = 0; row < rows.count; ++row, to += rows.bytes) {
            std::memcpy(to, from + row * strides_[plane].bytes, rows.bytes);
        }
        from += strides_[plane].bytes * strides_[plane].rows;
    }
    return true;
}

}  // namespace korframe
