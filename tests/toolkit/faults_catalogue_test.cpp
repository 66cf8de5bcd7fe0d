// Allocations of the functions of the catalogue fail: they report it, and the next call succeeds.
#include "support/allocations.hpp"
#include "toolkit/failed_allocations.hpp"
#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

constexpr const char* kGroup = "Camera/Backplate";

std::string inForm(std::uint32_t form, const char* filter) {
  char* text = nullptr;
  EXPECT_EQ(vrtkCatalogue(form, filter, &text, nullptr), VRTK_OK);
  std::string copy = text != nullptr ? text : "";
  vrtkStringDestroy(text);
  return copy;
}

TEST(vrtkCatalogue, ReportsEachFailedAllocation) {
  for (std::uint32_t form = VRTK_CATALOGUE_TEXT; form <= VRTK_CATALOGUE_MARKDOWN; ++form) {
    const std::string expected = inForm(form, kGroup);
    failEachAllocation([&] {
      char* text = nullptr;
      vrtkError* error = nullptr;
      const std::uint32_t status = vrtkCatalogue(form, kGroup, &text, &error);
      const ToolkitError owner(error);
      EXPECT_EQ(text != nullptr, status == VRTK_OK);
      EXPECT_EQ(error == nullptr, status == VRTK_OK);
      vrtkStringDestroy(text);
      return status;
    });
    EXPECT_EQ(inForm(form, kGroup), expected);
  }
}

TEST(vrtkCatalogueCompare, ReportsFailedAllocations) {
  std::string json = inForm(VRTK_CATALOGUE_JSON, kGroup);
  // So that there is something to tell.
  for (std::size_t at = json.find("\"mode\""); at != std::string::npos;
       at = json.find("\"mode\"")) {
    json.replace(at, 6, "\"Mode\"");
  }
  failSomeAllocations(
      97,
      [&] {
        vrtkCatalogueChanges* changes = nullptr;
        vrtkError* error = nullptr;
        const std::uint32_t status =
            vrtkCatalogueCompare(json.data(), json.size(), &changes, &error);
        const ToolkitError owner(error);
        EXPECT_EQ(changes != nullptr, status == VRTK_OK);
        if (status == VRTK_OK) {
          EXPECT_EQ(vrtkCatalogueChangesCount(changes), 2U);
        }
        vrtkCatalogueChangesDestroy(changes);
        return status;
      },
      [](std::uint32_t) {});
}

TEST(vrtkCatalogueChangesJson, ReportsEachFailedAllocation) {
  std::string json = inForm(VRTK_CATALOGUE_JSON, kGroup);
  json.replace(json.find("\"region\""), 8, "\"window\"");
  vrtkCatalogueChanges* changes = nullptr;
  ASSERT_EQ(vrtkCatalogueCompare(json.data(), json.size(), &changes, nullptr), VRTK_OK);
  failEachAllocation([&] {
    char* text = nullptr;
    const std::uint32_t status = vrtkCatalogueChangesJson(changes, &text, nullptr);
    EXPECT_EQ(text != nullptr, status == VRTK_OK);
    vrtkStringDestroy(text);
    return status;
  });
  vrtkCatalogueChangesDestroy(changes);
}

}  // namespace
}  // namespace vornath_test
