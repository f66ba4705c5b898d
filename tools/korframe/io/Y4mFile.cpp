#include "io/Y4mFile.h"

#include <algorithm>
#include <sstream>

#include "io/Errors.h"
#include "io/Numbers.h"
#include "io/RawFile.h"
#include "io/SizeChecks.h"

namespace korframe {

namespace {

const char* const kMagic = "YUV4MPEG2";
const char* const kFrame = "FRAME";
const char* const kMono = "mono";

constexpr std::uint8_t kGrey = 128;  // chroma of no colour

// The longest header line accepted; a file without line feeds has none.
constexpr std::size_t kLongestHeader = 4096;

[[noreturn]] void FailField(const std::string& name, const std::string& field, const std::string& expected) {
    FailFile(name, "has the field " + field + " in its Y4M header; expected " + expected);
}

std::size_t ParseSide(const std::string& name, const std::string& field) {
    const std::optional<unsigned long long> value = ParseNumber(field.substr(1));
    if (!value) {
        FailField(name, field, "a number of pixels after " + field.substr(0, 1));
    }
    return static_cast<std::size_t>(*value);
}

std::string ParseRatio(const std::string& name, const std::string& field) {
    const std::string ratio = field.substr(1);
    if (!IsRatio(ratio)) {
        FailField(name, field, "a ratio after " + field.substr(0, 1) + ", for example 25:1, or 0:0 if it is unknown");
    }
    return ratio;
}

bool StartsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

// 8-bit 4:2:0 of any siting, luma alone, which is read as 4:2:0, 4:2:2, and 4:4:4 without alpha. 420p10 and the like
// are not 8-bit.
const PixelFormat& ParseChroma(const std::string& name, const std::string& field) {
    const std::string chroma = field.substr(1);
    if (chroma == "420" || chroma == "420jpeg" || chroma == "420mpeg2" || chroma == "420paldv" || chroma == kMono) {
        return FormatOf(Layout::I420);
    }
    if (chroma == "422") {
        return FormatOf(Layout::I422);
    }
    if (chroma == "444") {
        return FormatOf(Layout::I444);
    }
    FailField(name, field, "C420jpeg, C420mpeg2, C420paldv, C420, C422, C444 or Cmono, all of 8 bits");
}

}  // namespace

bool IsY4m(const std::string& signature) {
    return StartsWith(signature, std::string(kMagic) + " ") || StartsWith(signature, std::string(kMagic) + "\n");
}

Y4mSource::Y4mSource(std::unique_ptr<InputFile> input) : input_(std::move(input)) {
    info_.name = input_->Name();
    info_.container = "Y4M";
    info_.hasTags = true;
    const std::optional<std::string> header = input_->ReadLine(kLongestHeader);
    if (!header) {
        FailFile(info_.name, "has a Y4M header that does not end; expected a line of at most " +
                                 std::to_string(kLongestHeader) + " bytes");
    }
    ParseHeader(*header);
    CheckSize(info_.name, info_.width, info_.height);
    if (mono_) {
        info_.container = "Y4M of luma alone (Cmono), read with grey chroma";
        DropChromaField(info_.tags);
    }
    if (input_->Size() && *input_->Size() > input_->Position()) {
        // Exact if no frame has fields of its own, a little high otherwise.
        const std::size_t frame = std::string(kFrame).size() + 1 + StoredBytes();
        info_.frames = (*input_->Size() - input_->Position()) / frame;
    }
}

void Y4mSource::ParseHeader(const std::string& header) {
    info_.format = &FormatOf(Layout::I420);  // unless a C field says otherwise
    info_.tags.interlacing = "?";
    info_.tags.aspect = "0:0";  // unknown
    info_.tags.extensions.clear();
    std::istringstream fields(header.substr(std::string(kMagic).size()));
    bool hasWidth = false;
    bool hasHeight = false;
    for (std::string field; fields >> field;) {
        switch (field[0]) {
            case 'W':
                info_.width = ParseSide(info_.name, field);
                hasWidth = true;
                break;
            case 'H':
                info_.height = ParseSide(info_.name, field);
                hasHeight = true;
                break;
            case 'C':
                info_.format = &ParseChroma(info_.name, field);
                mono_ = field.substr(1) == kMono;
                info_.tags.siting = info_.format->layout == Layout::I420 && !mono_ ? field.substr(1) : "";
                break;
            case 'F':
                info_.tags.rate = ParseRatio(info_.name, field);
                break;
            case 'A':
                info_.tags.aspect = ParseRatio(info_.name, field);
                break;
            case 'I':
                info_.tags.interlacing = field.substr(1);
                break;
            case 'X':
                info_.tags.extensions.push_back(field.substr(1));
                break;
            default:
                break;  // a field that is not known yet
        }
    }
    if (!hasWidth || !hasHeight) {
        FailFile(info_.name, std::string("has no ") + (hasWidth ? "height (H)" : "width (W)") +
                                 " in its Y4M header; expected both W and H");
    }
}

// The bytes of a frame in the file. If they are luma alone, they are the first plane of the frame.
std::size_t Y4mSource::StoredBytes() const {
    return mono_ ? info_.width * info_.height : info_.format->FrameBytes(info_.width, info_.height);
}

bool Y4mSource::Read(Frame& frame) {
    if (input_->Peek(1).empty()) {
        if (framesRead_ == 0) {
            FailFile(info_.name, "has a Y4M header but no frames");
        }
        return false;
    }
    const std::uint64_t position = input_->Position();
    const std::optional<std::string> line = input_->ReadLine(kLongestHeader);
    const std::string number = std::to_string(framesRead_ + 1);
    if (!line || (*line != kFrame && !StartsWith(*line, std::string(kFrame) + " "))) {
        if (!line && StartsWith(std::string(kFrame) + " ", input_->Peek(std::string(kFrame).size() + 1))) {
            throw BrokenStream(info_.name + ": frame " + number + " is truncated: the file ends within its FRAME line");
        }
        throw BrokenStream(info_.name + ": frame " + number + " does not begin with FRAME at byte " +
                           std::to_string(position) + "; the file is damaged or its header is wrong");
    }
    frameFields_ = line->substr(std::string(kFrame).size());
    frame.Reset(*info_.format, info_.width, info_.height);
    ReadFrameBytes(*input_, frame.Data(), StoredBytes(), framesRead_ + 1);
    std::fill(frame.Data() + StoredBytes(), frame.Data() + frame.Size(), kGrey);
    ++framesRead_;
    return true;
}

Y4mSink::Y4mSink(const std::string& path, const StreamInfo& info, const OutputPolicy& policy)
    : output_(path, policy), keepsFields_(info.tags.interlacing == "m") {
    const ClipTags& tags = info.tags;
    std::string chroma = info.format->layout == Layout::I422 ? "422" : "444";
    if (info.format->layout == Layout::I420) {
        chroma = tags.siting.empty() ? info.format->siting : tags.siting;
    }
    std::ostringstream header;
    header << kMagic << " W" << info.width << " H" << info.height << " F" << tags.rate << " I" << tags.interlacing
           << " A" << tags.aspect << " C" << chroma;
    for (const std::string& extension : tags.extensions) {
        header << " X" << extension;
    }
    header << "\n";
    output_.Write(header.str().data(), header.str().size());
}

void Y4mSink::Write(const Frame& frame, const std::string& fields, const Coded& /*coded*/) {
    const std::string line = std::string(kFrame) + (keepsFields_ ? fields : "") + "\n";
    output_.Write(line.data(), line.size());
    output_.Write(frame.Data(), frame.Size());
}

}  // namespace korframe
