// The check of a value in a file: a stream of records, one for each block.
#ifndef VORNATH_TOOLKIT_CHECK_VALUE_CHECK_HPP
#define VORNATH_TOOLKIT_CHECK_VALUE_CHECK_HPP

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "check/block_set.hpp"
#include "check/rules.hpp"
#include "check/type_cache.hpp"
#include "file/sources.hpp"

namespace vrtk {

/// The references that one may have to follow from the value to a block.
inline constexpr std::size_t kDeepestValue = 100000;

class ValueCheck {
 public:
  /// Adds to the report's blocks, bytes and memory.
  ValueCheck(ByteSource& source, Window& window, vrtkReport& report, const LiveSlots& textures)
      : window_(window), back_(source, kBackCapacity), report_(report), textures_(textures) {}

  /// Checks the value of an object, whose stream starts at `position`, and moves `position` behind
  /// it. `owner` is the object's address. Returns false if the file cannot be understood any
  /// further; the report then has an error.
  bool run(std::uint64_t& position, const std::string& owner);

 private:
  class BlockPlace;

  // A block whose references are being followed.
  struct Frame {
    std::uint64_t textOffset;
    std::uint64_t textLength;
    std::uint64_t type;  // its number in the cache
    std::uint64_t data;  // bytes from the start of the file
    std::uint64_t next;  // the reference that is next
    std::uint64_t references;
    std::uint64_t word;
    double parts;
  };

  bool readRecord(std::uint64_t& position, std::uint64_t word, const vrntType_t* target);
  bool follow(std::uint64_t& position);
  TypeCache::Found typeAt(Window& window, std::size_t capacity, std::uint64_t offset,
                          std::uint64_t length, TypeFault& fault);
  ValueTypePtr typeOf(const Frame& frame);
  // The address of a place in the block that is open last; all blocks up to it are on the way.
  std::string address(const vrntType_t* type, std::uint64_t offset);
  bool fail(Code code, std::uint64_t offset, const std::string& message);
  bool requireBytes(std::uint64_t position, std::uint64_t count, const char* what);

  static constexpr std::size_t kBackCapacity = std::size_t{16} << 10;

  Window& window_;
  Window back_;  // for what lies before the record that is being read
  vrtkReport& report_;
  const LiveSlots& textures_;
  TypeCache types_;
  BlockSet blocks_;
  std::deque<Frame> frames_;
  ValueTypePtr top_;  // the type of the last frame, or null
  const std::string* owner_ = nullptr;
  // The last pair of types that was found related.
  ValueTypePtr relatedFrom_;
  vrnt::UniqueType relatedTo_;
  std::string text_;
};

}  // namespace vrtk

#endif
