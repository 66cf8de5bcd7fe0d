#include "catalogue/forms.hpp"
namespace vrtk {
std::string catalogueHtml(const CatalogueModel& catalogue) { return catalogue.filter; }
}  // namespace vrtk
