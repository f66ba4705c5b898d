// A file or standard input ("-"), read in one direction, with look-ahead to recognise its kind.
#ifndef KORFRAME_INPUTFILE_H
#define KORFRAME_INPUTFILE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korframe {

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
    // The next byte without consuming it; -1 at the end.
    int PeekByte() { return aheadBegin_ < ahead_.size() || Fill() ? ahead_[aheadBegin_] : -1; }
    // The bytes that can be had at once, at least one unless at the end. They stay until the next call but Consume.
    const std::uint8_t* AtHand(std::size_t& count);
    // Consumes bytes that were seen by one of these.
    void Consume(std::size_t count) {
        aheadBegin_ += count;
        position_ += count;
    }
    // Reads up to `count` bytes, fewer only at the end.
    std::size_t Read(std::uint8_t* bytes, std::size_t count);
    // Reads a line without its line feed. Nothing if the end or `limit` bytes come before a line feed.
    std::optional<std::string> ReadLine(std::size_t limit);
    void SkipRest();
    // Reads to the end. Fails if there are more than `limit` bytes, since an input may have no end; `expected` then
    // completes the message.
    std::vector<std::uint8_t> ReadAll(std::size_t limit, const std::string& expected);

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
