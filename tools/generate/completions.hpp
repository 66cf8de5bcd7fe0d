// Completions for shells.
#ifndef VRN_GENERATE_COMPLETIONS_HPP
#define VRN_GENERATE_COMPLETIONS_HPP

#include <string>

namespace vrn {

std::string bashCompletion();
std::string zshCompletion();
std::string fishCompletion();

}  // namespace vrn

#endif
