#include "views.hpp"

#include "dynamic_value.hpp"
#include "relations.hpp"

namespace qex::vornath {

const char* ConstView::data() const { return owner->data() + offset; }

void requireAccessible(const Type& given, const Type& required) {
  requireRelated(given, required, "Incompatible type for accessor -> {}.");
}

}  // namespace qex::vornath
