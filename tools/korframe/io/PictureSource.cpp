#include "io/PictureSource.h"

#include <dirent.h>
#include <glob.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "io/Errors.h"
#include "io/NumberedName.h"
#include "io/Numbers.h"

namespace korframe {

namespace {

struct CloseDirectory {
    void operator()(DIR* directory) const { closedir(directory); }
};

// The numbers of the files in the pattern's directory, in ascending order.
std::vector<std::uint64_t> FindNumbers(const NumberedName& pattern, const std::string& directory) {
    std::vector<std::uint64_t> numbers;
    const std::unique_ptr<DIR, CloseDirectory> entries(opendir(directory.empty() ? "." : directory.c_str()));
    while (const dirent* entry = entries ? readdir(entries.get()) : nullptr) {
        if (const std::optional<std::uint64_t> number = pattern.NumberOf(directory + entry->d_name)) {
            numbers.push_back(*number);
        }
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

std::vector<std::string> FindNumbered(const NumberedName& pattern, const std::string& path) {
    const std::vector<std::uint64_t> numbers = FindNumbers(pattern, path.substr(0, path.rfind('/') + 1));
    std::vector<std::string> files;
    for (const std::uint64_t number : numbers) {
        if (!files.empty() && number != numbers[files.size() - 1] + 1) {
            const std::uint64_t last = numbers[files.size() - 1];
            FailFile(pattern.For(last + 1),
                     "is missing; " + pattern.For(last) + " and " + pattern.For(number) + " are there");
        }
        files.push_back(pattern.For(number));
    }
    return files;
}

std::vector<std::string> FindMatching(const std::string& path) {
    glob_t found = {};
    std::vector<std::string> files;
    if (glob(path.c_str(), 0, nullptr, &found) == 0) {
        files.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
    }
    globfree(&found);
    return files;
}

}  // namespace

std::vector<std::string> FindSeries(const std::string& path) {
    struct stat status = {};
    if (path == "-" || stat(path.c_str(), &status) == 0) {
        return {};
    }
    const NumberedName pattern(path);
    const bool globbed = path.find_first_of("*?[") != std::string::npos;
    if (!pattern.IsNumbered() && !globbed) {
        return {};
    }
    std::vector<std::string> files = pattern.IsNumbered() ? FindNumbered(pattern, path) : FindMatching(path);
    if (files.empty()) {
        FailFile(path, "matches no file");
    }
    return files;
}

PictureSource::PictureSource(std::unique_ptr<InputFile> input, std::vector<std::string> moreFiles,
                             const std::string& name, const PictureRequest& request, const char* advice)
    : input_(std::move(input)), moreFiles_(std::move(moreFiles)), request_(request), advice_(advice) {
    info_.name = name;
    info_.format = request.order;
    const std::size_t files = 1 + moreFiles_.size();
    std::reverse(moreFiles_.begin(), moreFiles_.end());
    ReadNext(first_);
    info_.picture = !FindNext();
    if (info_.picture || files > 1) {
        info_.frames = files;
    }
    if (!info_.picture) {
        info_.container += "s";
    }
}

bool PictureSource::Read(Frame& frame) {
    if (std::exchange(holdsFirst_, false)) {
        frame = std::move(first_);
        return true;
    }
    try {
        if (!FindNext()) {
            return false;
        }
        ReadNext(frame);
    } catch (const Error& error) {
        throw BrokenStream(error.what());
    }
    return true;
}

// Moves to the next picture, in this file or the next; false at the end.
bool PictureSource::FindNext() {
    while (input_->PeekByte() < 0) {
        if (moreFiles_.empty()) {
            return false;
        }
        input_ = std::make_unique<InputFile>(moreFiles_.back());
        moreFiles_.pop_back();
        picturesOfFile_ = 0;
        if (input_->PeekByte() < 0) {
            FailFile(input_->Name(), "is empty; expected a PNG, JPEG or PPM picture");
        }
    }
    return true;
}

std::string PictureSource::NameOfPicture() const {
    return input_->Name() + (picturesOfFile_ == 0 ? "" : ", picture " + std::to_string(picturesOfFile_ + 1));
}

void PictureSource::ReadNext(Frame& frame) {
    if (picturesOfFile_ > 0 && RecognisePicture(input_->Peek(kSignatureBytes)) == PictureKind::None) {
        FailFile(input_->Name(), "has bytes that are no picture behind picture " + std::to_string(picturesOfFile_) +
                                     ", from byte " + std::to_string(input_->Position()) + " on");
    }
    const std::string name = NameOfPicture();
    const PictureFacts facts = ReadPicture(*input_, name, request_, frame);
    ++picturesOfFile_;
    if (facts.ownsRest) {
        input_->SkipRest();
    }
    if (info_.width == 0) {
        info_.container = NameOfKind(facts.kind);
        info_.width = facts.width;
        info_.height = facts.height;
        info_.alpha = facts.alpha && request_.keepAlpha;
    } else if (facts.width != info_.width || facts.height != info_.height) {
        FailFile(name, "is " + SizeText(facts.width, facts.height) + "; expected " +
                           SizeText(info_.width, info_.height) + ", the size of the first picture");
    }
    Warn(name, facts);
}

// Each warning once, however many pictures there are.
void PictureSource::Warn(const std::string& name, const PictureFacts& facts) {
    PictureFacts fresh = facts;
    fresh.transparent =
        facts.transparent && !std::exchange(warned_.transparent, warned_.transparent || facts.transparent);
    fresh.ownsRest = facts.ownsRest && !std::exchange(warned_.ownsRest, warned_.ownsRest || facts.ownsRest);
    fresh.otherGamma = warned_.otherGamma > 0 ? 0 : facts.otherGamma;
    warned_.otherGamma += fresh.otherGamma;
    WarnOfPicture(name, fresh, advice_);
}

}  // namespace korframe
