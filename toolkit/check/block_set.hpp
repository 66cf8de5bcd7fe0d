// The blocks of a value that the check has met, by their words in the stream.
#ifndef VORNATH_TOOLKIT_CHECK_BLOCK_SET_HPP
#define VORNATH_TOOLKIT_CHECK_BLOCK_SET_HPP

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vrtk {

/// A set of words, each with a number: how many parts a text of the block has, or that the block
/// is not read to its end. Takes about eight bytes a word when there are many: a damaged file must
/// not make the check run out of memory. The numbers are kept in 16 bits and so are approximate.
class BlockSet {
 public:
  enum class State { Unknown, Open, Closed };

  BlockSet();
  ~BlockSet();
  BlockSet(const BlockSet&) = delete;
  BlockSet& operator=(const BlockSet&) = delete;

  void clear();

  /// Returns what is known of a word. Sets `parts` for one that is closed.
  State find(std::uint64_t word, double& parts) const;

  /// Adds a word, which must be unknown, as open. Throws std::bad_alloc.
  void open(std::uint64_t word);
  /// Closes an open word.
  void close(std::uint64_t word, double parts);

  /// Returns the bytes that the set takes.
  std::size_t memory() const;

 private:
  struct Entry {
    std::uint64_t key;
    std::uint16_t number;
    bool used;
  };
  class Segments;

  std::uint16_t* numberOf(std::uint64_t key) const;
  Entry* slotOf(std::uint64_t key) const;
  void grow();

  // Few words: a table of entries, of which at most half are used.
  mutable std::vector<Entry> table_;
  std::size_t count_ = 0;
  // Many words.
  std::unique_ptr<Segments> segments_;
};

}  // namespace vrtk

#endif
