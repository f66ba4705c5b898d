// A file or standard input ("-"), read in one direction, with look-ahead to recognise its kind.
#ifndef KORFRAME_INPUTFILE_H
#define KORFRAME_INPUTFILE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korframe {

// The largest file that is read as a whole, such as a picture.
constexpr std::size_t kLargestWhole = std::size_t{1} << 31;

class InputFile {
  public:
    explicit InputFile(const std::string& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    // As messages name it.
    const std::string& Name() const { return name_; }
    // The size, if known in advance.
    std::optional<std::uint64_t> Size() const { return size_; }
    // Bytes consumed so far.
    std::uint64_t Position() const { return position_; }

    // The next `count` bytes, fewer only at the end, without consuming them.
    std::string Peek(std::size_t count);
    // Reads up to `count` bytes, fewer only at the end.
    std::size_t Read(std::uint8_t* bytes, std::size_t count);
    // Reads a line without its line feed. Nothing if the end or `limit` bytes come before a line feed.
    std::optional<std::string> ReadLine(std::size_t limit);
    // Reads to the end. Fails if there are more than `limit` bytes, since an input may have no end; `expected` then
    // completes the message.
    std::vector<std::uint8_t> ReadAll(std::size_t limit = kLargestWhole,
                                      const std::string& expected = "a smaller file");

  private:
    bool Fill();
    std::size_t ReadSome(std::uint8_t* bytes, std::size_t count);

    std::string name_;
    bool isStandardInput_;
    int descriptor_;
    std::optional<std::uint64_t> size_;
    std::uint64_t position_ = 0;
    std::vector<std::uint8_t> ahead_;
    std::size_t aheadBegin_ = 0;
};

}  // namespace korframe

#endif
