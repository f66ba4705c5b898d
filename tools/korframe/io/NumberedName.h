// Names of numbered pictures: "out-%04d.png" stands for out-0001.png, out-0002.png and so on.
#ifndef KORFRAME_NUMBEREDNAME_H
#define KORFRAME_NUMBEREDNAME_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace korframe {

class NumberedName {
  public:
    // A %d or %0Nd in the pattern is replaced by the number; there may be only one. Any other % stands for itself.
    explicit NumberedName(const std::string& pattern);

    bool IsNumbered() const { return numbered_; }
    std::string For(std::uint64_t number) const;
    // The number for which the pattern gives this name, if there is one.
    std::optional<std::uint64_t> NumberOf(const std::string& name) const;

  private:
    std::string before_;
    std::string after_;
    std::size_t digits_ = 0;
    bool numbered_ = false;
};

}  // namespace korframe

#endif
