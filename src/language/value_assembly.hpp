/// The values of a text that are being built: each is a node with its place in the value around it,
/// and has no block of its own. The block is allocated for what stands by itself (a whole value,
/// what a reference leads to, an annotation), and its parts are written in place.
#ifndef VORNATH_LANGUAGE_VALUE_ASSEMBLY_HPP
#define VORNATH_LANGUAGE_VALUE_ASSEMBLY_HPP

#include <boost/container/small_vector.hpp>
#include <cstdint>
#include <string_view>
#include <vector>

#include "types/extents.hpp"
#include "types/type.hpp"
#include "values/block.hpp"
#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// Time and memory are linear in the number of nodes, however deep they are nested. Functions throw
/// std::bad_alloc and what the construction of their type throws; after that the assembly may only
/// be destroyed.
class ValueAssembly {
 public:
  /// `lanes` are the bytes of scalars and short vectors and must outlive the assembly.
  explicit ValueAssembly(const char* lanes) : lanes_(lanes) {}

  /// Adds values of a base type that lie one after the other from lanes[offset].
  void addLanes(Type::TBasetype base, std::uint32_t count, std::uint64_t offset);
  /// Adds an enum value.
  void addEnumerator(const TypePtr& enumType, std::string_view constructor);
  /// Adds a foreign pointer of the type.
  void addForeign(const TypePtr& referenceType, std::uint64_t id);

  /// Replaces the last value by a reference to it.
  void refer();
  /// Labels the last value. The label must outlive the assembly.
  void label(std::string_view text) { labels_.push_back(text); }
  /// Replaces the last `count` values, each labelled, by a struct.
  void makeStruct(std::uint32_t count);
  /// Replaces what the last `count` functions added by an array of these values, of the element
  /// type, or of the first value's if that is null. Without extents there is one element for each
  /// value.
  void makeArray(std::uint32_t count, const Extents* extents, const TypePtr& element);

  /// Removes the last value and returns it.
  DynamicValue take();

 private:
  using Index = std::uint32_t;

  // A part that is written from lanes or from a word, or a struct or array that only places others.
  struct Node {
    enum Kind : std::uint8_t { Lanes, Word, Aggregate };

    Kind kind;
    std::uint32_t count;       // values, one after the other
    Index first;               // of the nodes within this one, which stand before it
    Index outer;               // set once there is one
    std::uint64_t offset;      // in the outer node
    std::uint64_t source;      // of the lanes, or the word
    const InternedType* type;  // without annotations; a permanent one or an owned one
    Index ownedTypes;          // how many there are without those of this node and the ones within
    Index referees;            // likewise
  };

  // The last nodes that have no outer one, as a list of parts.
  struct Parts;

  Node& add(Node::Kind kind, const InternedType& type);
  Node& addOwned(Node::Kind kind, const InternedType& type);
  void makeAggregate(const InternedType& type, std::size_t firstOpen);

  const char* const lanes_;
  boost::container::small_vector<Node, 16> nodes_;  // each behind those within it
  boost::container::small_vector<Index, 16> open_;  // those without an outer one
  boost::container::small_vector<std::string_view, 16> labels_;
  std::vector<TypePtr> ownedTypes_;
  std::vector<BlockPtr> referees_;
};

}  // namespace qex::vornath

#endif
