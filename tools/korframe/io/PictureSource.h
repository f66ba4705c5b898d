// Pictures as frames: one after another in a file or pipe, in numbered files, or in files that a pattern matches.
#ifndef KORFRAME_PICTURESOURCE_H
#define KORFRAME_PICTURESOURCE_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "io/InputFile.h"
#include "io/PictureFile.h"
#include "io/Stream.h"

namespace korframe {

// The files that the name of an input stands for, if there is none of that very name: "frame-%04d.png" for those with
// consecutive numbers, "shots/*.png" for those that match, in the order of their names. Empty if it stands for itself.
std::vector<std::string> FindSeries(const std::string& path);

class PictureSource : public FrameSource {
  public:
    // Reads the first picture. `input` is the first of the files; `name` stands for all. `advice` says how to keep
    // alpha, for a warning; it may be null.
    PictureSource(std::unique_ptr<InputFile> input, std::vector<std::string> moreFiles, const std::string& name,
                  const PictureRequest& request, const char* advice);

    bool Read(Frame& frame) override;

  private:
    bool FindNext();
    void ReadNext(Frame& frame);
    void Warn(const std::string& name, const PictureFacts& facts);
    std::string NameOfPicture() const;

    std::unique_ptr<InputFile> input_;
    std::vector<std::string> moreFiles_;  // last first
    PictureRequest request_;
    const char* advice_;
    std::uint64_t picturesOfFile_ = 0;  // read so far
    PictureFacts warned_;
    Frame first_;
    bool holdsFirst_ = true;
};

}  // namespace korframe

#endif
