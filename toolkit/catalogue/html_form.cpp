// The catalogue as one page for a browser. The page fetches nothing, and its policy forbids it to:
// its style and its script are in it, and the policy names them by their digests.
#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "catalogue/asset_members.hpp"
#include "catalogue/forms.hpp"
#include "catalogue/page.hpp"
#include "catalogue/range_picture.hpp"
#include "catalogue/words.hpp"
#include "check/type_plan.hpp"
#include "vornath_data/metadata.h"

namespace vrtk {
namespace {

std::string escaped(std::string_view text) {
  std::string out;
  for (const char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

// What a link calls an element: the name, with a hyphen for what a link would have to escape.
std::string anchor(std::string_view name) {
  std::string out(name);
  for (char& c : out) {
    const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                         (c >= '0' && c <= '9') || c == '_' || c == '/';
    if (!isPlain) c = '-';
  }
  return out;
}

// A path that a browser may break behind each stroke.
std::string breakable(std::string_view path) {
  std::string out;
  for (const char c : path) {
    out += c;
    if (c == '/') out += "<wbr>";
  }
  return out;
}

class Page {
 public:
  explicit Page(const CatalogueModel& catalogue) : catalogue_(catalogue) {
    head();
    contents();
    print(R"(<main id="main">)"
          "\n");
    legend();
    for (const ClassModel& model : catalogue.classes) addClass(model);
    if (catalogue.scene) addClass(*catalogue.scene);
    print("<p id=\"nothing\" hidden>Nothing in the catalogue has these words.</p>\n</main>\n");
    print("<script>{}</script>\n</body>\n</html>\n", kPageScript.text);
  }

  std::string text;

 private:
  template <typename... Arguments>
  void print(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    fmt::format_to(std::back_inserter(text), format, std::forward<Arguments>(arguments)...);
  }

  void head() {
    print(
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<meta name=\"color-scheme\" content=\"light dark\">\n"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
        "style-src 'sha256-{}'; script-src 'sha256-{}'; base-uri 'none'; form-action 'none'\">\n"
        "<title>Scene catalogue, version {}</title>\n<style>{}</style>\n</head>\n<body>\n",
        kPageStyle.digest, kPageScript.digest, catalogue_.sceneVersion, kPageStyle.text);
    print(
        "<a class=\"skip\" href=\"#main\">Skip to the catalogue</a>\n<header class=\"top\">\n"
        "<button id=\"menu\" type=\"button\" aria-expanded=\"false\" "
        "aria-controls=\"nav\">Contents</button>\n"
        "<h1>Scene catalogue <small>version {}</small></h1>\n"
        "<div class=\"search\" role=\"search\"><input id=\"search\" type=\"search\" "
        "placeholder=\"Search fields\" "
        "aria-label=\"Search names, labels and descriptions\" autocomplete=\"off\" "
        "spellcheck=\"false\"><kbd aria-hidden=\"true\">/</kbd></div>\n"
        "<output id=\"found\" for=\"search\" aria-live=\"polite\"></output>\n</header>\n",
        catalogue_.sceneVersion);
  }

  static std::string_view titleOf(const ClassModel& model) {
    return model.number == VRDM_CLASS_SCENE_DATA ? std::string_view("The scene as a whole")
                                                 : std::string_view(model.name);
  }

  void contents() {
    print("<nav id=\"nav\" aria-label=\"Classes and groups\">\n<ul>\n");
    for (const ClassModel& model : catalogue_.classes) contentsOf(model);
    if (catalogue_.scene) contentsOf(*catalogue_.scene);
    print(
        "</ul>\n<div class=\"keys\"><p><kbd>/</kbd> search</p><p><kbd>Esc</kbd> end the search</p>"
        "<p><kbd>j</kbd> <kbd>k</kbd> next, previous field</p>"
        "<p><kbd>Enter</kbd> link to the field</p></div>\n</nav>\n");
  }

  void contentsOf(const ClassModel& model) {
    print("<li><a href=\"#{}\">{}</a>", anchor(model.name), titleOf(model));
    if (!model.groups.empty()) {
      print("<ul>");
      for (const GroupModel& group : model.groups) {
        print("<li><a href=\"#{}\">{}</a></li>", anchor(model.name + "/" + group.name),
              escaped(group.name));
      }
      print("</ul>");
    }
    print("</li>\n");
  }

  void legend() {
    print(
        "<p class=\"legend\"><span><svg class=\"range\" viewBox=\"0 0 120 16\" "
        "aria-hidden=\"true\">"
        "<line class=\"axis\" x1=\"8\" y1=\"8\" x2=\"120\" y2=\"8\"/>"
        "<rect class=\"hard\" x=\"8\" y=\"4\" width=\"112\" height=\"8\" rx=\"2\"/>"
        "<rect class=\"soft\" x=\"8\" y=\"6\" width=\"70\" height=\"4\" rx=\"2\"/>"
        "<path class=\"end\" d=\"M115 4L119 8L115 12\"/>"
        "<circle class=\"default\" cx=\"36\" cy=\"8\" r=\"3.5\"/></svg>"
        "wide bar: hard limits; narrow bar: soft limits, as of a slider; dot: the default; "
        "arrow: no limit</span><span>Offsets and sizes are in bytes.</span></p>\n");
  }

  void addClass(const ClassModel& model) {
    const std::string id = anchor(model.name);
    print(
        "<section class=\"class{}\" id=\"{}\" data-name=\"{}\">\n<h2><a href=\"#{}\">{}</a></h2>\n"
        "<p class=\"facts\">",
        model.groups.empty() && model.slots.empty() ? " plain" : "", id, escaped(model.name), id,
        titleOf(model));
    if (model.number != VRDM_CLASS_SCENE_DATA) {
      print("class {} · {}{}", model.number, kindName(model.kind),
            model.hasValue ? " with a value for its program" : "");
    }
    if (!model.groups.empty()) {
      print("{}{} bytes of groups", model.number == VRDM_CLASS_SCENE_DATA ? "" : " · ",
            model.groupsSize);
    }
    addRecord(model);
    print("</p>\n");
    if (!model.slots.empty()) addSlots(model);
    for (const GroupModel& group : model.groups) addGroup(model, group);
    print("</section>\n");
  }

  // What an object of a class without groups is made of.
  void addRecord(const ClassModel& model) {
    if (model.kind == VRDM_KIND_PROGRAM && model.number != VRDM_CLASS_SCENE_DATA) {
      print(" · a source text");
    }
    const std::vector<AssetMember> members = assetMembers(model.number);
    if (members.empty()) return;
    print(" · bytes, and a record of ");
    for (const AssetMember& member : members) {
      print("{}<code>{}</code>", &member == members.data() ? "" : ", ", member.name);
    }
  }

  void addSlots(const ClassModel& model) {
    print(
        "<table class=\"fields slots\"><colgroup><col class=\"c-name\"><col class=\"c-type\"><col>"
        "</colgroup><thead><tr><th>Reference slot</th><th>Holds</th><th>Target</th></tr></thead>"
        "<tbody>\n");
    for (const SlotModel& slot : model.slots) {
      const std::string id = anchor(model.name + "/slots/" + slot.info.name);
      print(
          "<tr class=\"field\" id=\"{}\"><td class=\"name\"><a "
          "href=\"#{}\"><code>{}</code></a></td>"
          "<td class=\"type\">{}</td><td class=\"about\">",
          id, id, escaped(slot.info.name), slotKindName(slot.info.kind));
      if (slot.info.targetClass == VRDM_TARGET_EMITTER) {
        target(VRDM_CLASS_LIGHT);
        print(" or ");
        target(VRDM_CLASS_SHAPE);
      } else {
        target(slot.info.targetClass);
      }
      print("</td></tr>\n");
    }
    print("</tbody></table>\n");
  }

  // A class that the page has is a link.
  void target(std::uint32_t objectClass) {
    const std::string_view name = vrdmObjectName(objectClass);
    const bool isHere =
        std::any_of(catalogue_.classes.begin(), catalogue_.classes.end(),
                    [objectClass](const ClassModel& model) { return model.number == objectClass; });
    if (isHere) {
      print("<a href=\"#{}\">{}</a>", name, name);
    } else {
      print("{}", name);
    }
  }

  void addGroup(const ClassModel& model, const GroupModel& group) {
    const vrntType_t* const type = group.type.get();
    const std::string id = anchor(model.name + "/" + group.name);
    print(
        "<section class=\"group\" id=\"{}\" data-name=\"{}\">\n<h3><a href=\"#{}\" "
        "data-owner=\"{}\">{}</a></h3>\n",
        id, escaped(group.name), id, titleOf(model), escaped(group.name));
    const std::string_view words = annotationText(type, "desc");
    if (!words.empty()) print("<p>{}</p>\n", escaped(words));
    print("<p class=\"facts\">{} bytes at {}, aligned to {} ", vrntTypeSize(type), group.offset,
          vrntTypeAlignment(type));
    chips(type);
    print(
        "</p>\n<table class=\"fields\"><colgroup><col class=\"c-name\"><col class=\"c-type\">"
        "<col class=\"c-default\"><col class=\"c-range\"><col class=\"c-offset\"><col></colgroup>"
        "<thead><tr><th>Field</th><th>Type</th><th>Default</th><th>Limits</th>"
        "<th class=\"offset\">Offset</th><th>Description</th></tr></thead><tbody>\n");
    for (const FieldModel& field : group.fields) addField(id, field);
    print("</tbody></table>\n</section>\n");
  }

  void chips(const vrntType_t* type) {
    const std::vector<std::string> further = furtherWords(type);
    if (further.empty()) return;
    print("<span class=\"chips\">");
    for (const std::string& words : further)
      print("<span class=\"chip\">{}</span>", escaped(words));
    print("</span>");
  }

  void addField(const std::string& group, const FieldModel& field) {
    const vrntType_t* const type = field.type.get();
    const std::string id = group + "/" + field.path;
    const bool holdsFields = isStruct(innermostElement(type).get());
    const std::string inside = field.path.substr(0, field.path.size() - field.name.size());
    const std::string_view label = annotationText(type, "name");
    const std::string_view unit = annotationText(type, "si_unit");
    print("<tr class=\"field{}\" id=\"{}\"><td class=\"name\"><a href=\"#{}\"><code>",
          holdsFields ? " struct" : "", id, id);
    if (!inside.empty()) print("<span class=\"inside\">{}</span>", breakable(inside));
    print("{}</code></a>", field.name);
    if (!label.empty()) print("<span class=\"label\">{}</span>", escaped(label));
    print("</td><td class=\"type\"><code>{}</code></td><td class=\"default\">",
          escaped(typeWords(type)));
    if (!holdsFields) {
      print("<code>{}</code>", escaped(valueWords(type, field.defaultBytes)));
      if (!unit.empty()) print(" {}", escaped(unit));
    }
    print("</td><td class=\"range-cell\">{}", rangePicture(field));
    if (const std::string limits = limitWords(type); !limits.empty()) {
      print("<span class=\"limits\">{}", escaped(limits));
      if (!unit.empty()) print(" {}", escaped(unit));
      print("</span>");
    }
    print("</td><td class=\"offset\">{}</td><td class=\"about\">", field.offset);
    if (const auto words = annotationText(type, "desc"); !words.empty()) {
      print("<p>{}</p>", escaped(words));
    }
    constructors(field);
    chips(type);
    print("</td></tr>\n");
  }

  void constructors(const FieldModel& field) {
    if (field.constructors.empty()) return;
    const bool isLong = std::any_of(
        field.constructors.begin(), field.constructors.end(), [](const ConstructorModel& each) {
          return each.annotations && !annotationText(each.annotations.get(), "desc").empty();
        });
    const std::string byDefault = valueWords(field.type.get(), field.defaultBytes);
    print("<ul class=\"choices{}\">", isLong ? " long" : "");
    for (const ConstructorModel& each : field.constructors) {
      print("<li{}><span class=\"code\">{}</span><code>{}</code>",
            each.label == byDefault ? " class=\"default\"" : "", each.code,
            escaped(each.label + each.fields));
      if (each.annotations) {
        const std::string_view name = annotationText(each.annotations.get(), "name");
        const std::string_view words = annotationText(each.annotations.get(), "desc");
        print("<span class=\"words\">{}{}{}</span>", escaped(name),
              name.empty() || words.empty() ? "" : ": ", escaped(words));
      }
      print("</li>");
    }
    print("</ul>");
  }

  const CatalogueModel& catalogue_;
};

}  // namespace

std::string catalogueHtml(const CatalogueModel& catalogue) {
  return std::move(Page(catalogue).text);
}

}  // namespace vrtk
