#include "values/views.hpp"

#include "types/relations.hpp"
#include "values/dynamic_value.hpp"

namespace qex::vornath {

const char* ConstView::data() const { return owner->data() + offset; }

void requireAccessible(const InternedType& given, const InternedType& required) {
  requireRelated(given, required, "Incompatible type for accessor -> {}.");
}

}  // namespace qex::vornath
