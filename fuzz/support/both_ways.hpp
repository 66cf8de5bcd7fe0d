// A text that is built from a plan against the same text built by the generated parser.
#ifndef VORNATH_FUZZ_BOTH_WAYS_HPP
#define VORNATH_FUZZ_BOTH_WAYS_HPP

#include <string>

namespace vornath_fuzz {

// Each checks that both ways take the text or neither, and that they build the same or fail with
// the same words. May throw std::bad_alloc.
void checkTypeBothWays(const std::string& text);
void checkValueBothWays(const std::string& text);

}  // namespace vornath_fuzz

#endif
