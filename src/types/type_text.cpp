#include "type_text.hpp"

#include "base_types.hpp"
#include "metadata.hpp"

namespace qex::vornath {
namespace {

std::string textOf(Type::TBasetype base) { return baseTypeInfo(base).spelling; }

std::string textOf(const Type::TEnum& enumeration) { return enumText(enumeration); }

std::string textOf(const Type::TStruct& structure) {
  std::string text = "{ ";
  for (const Type::Field& field : structure.fields) {
    text.append(field.type->text()).append(" ").append(field.label).append("; ");
  }
  return text.append("}");
}

template <typename D>
std::string textOf(const Type::TArrayND<D>& array) {
  constexpr std::size_t rank = sizeof(D) / sizeof(std::int32_t);
  std::string text = array.element->text();
  text.append("[");
  text.append(array.shape ? extentsText(*array.shape) : std::string(rank - 1, ','));
  return text.append("]");
}

std::string textOf(const Type::TRef& reference) {
  return (reference.target ? reference.target->text() : "void") + "*";
}

std::string textOf(const Type::TFun& function) {
  std::string text = "((";
  const char* separator = "";
  for (const TypePtr& domain : function.domain) {
    text.append(separator).append(domain->text());
    separator = ", ";
  }
  return text.append(") => ").append(function.codomain->text()).append(")");
}

std::string joined(std::initializer_list<std::int32_t> extents) {
  std::string text;
  for (const std::int32_t extent : extents) {
    if (!text.empty()) text.append(",");
    text.append(std::to_string(extent));
  }
  return text;
}

}  // namespace

std::string enumText(const Type::TEnum& enumeration) {
  std::string text = "enum { ";
  for (const Type::Constructor& constructor : enumeration.constructors) {
    text.append(constructor.name);
    const char* separator = "( ";
    for (const Type::Field& field : constructor.payload.fields) {
      text.append(separator).append(field.type->text()).append(" ").append(field.label);
      separator = ", ";
    }
    if (!constructor.payload.fields.empty()) text.append(" )");
    text.append(metadataText(constructor.metadata)).append("; ");
  }
  return text.append("}");
}

std::string extentsText(int shape) { return joined({shape}); }
std::string extentsText(const index2& shape) { return joined({shape.x, shape.y}); }
std::string extentsText(const index3& shape) { return joined({shape.x, shape.y, shape.z}); }
std::string extentsText(const index4& shape) {
  return joined({shape.x, shape.y, shape.z, shape.w});
}

std::string descText(const TypeDesc& desc) {
  return std::visit([](const auto& alternative) { return textOf(alternative); }, desc);
}

}  // namespace qex::vornath
