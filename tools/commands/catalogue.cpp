// vrn catalogue: classes, groups and fields as the library tells them.
#include <algorithm>
#include <memory>

#include "command.hpp"
#include "core/stream.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

const std::vector<std::string> kForms = {"text", "json", "schema", "html", "markdown"};

struct Choices {
  std::string filter;
  std::string form = "text";
  std::string output = "-";
  std::string compare;
};

struct ChangesDeleter {
  void operator()(vrtkCatalogueChanges* changes) const noexcept {
    vrtkCatalogueChangesDestroy(changes);
  }
};

int compare(Session& session, const Choices& choices) {
  const std::string saved = readAll(choices.compare);
  vrtkCatalogueChanges* found = nullptr;
  ErrorOut error;
  if (vrtkCatalogueCompare(saved.data(), saved.size(), &found, error) != VRTK_OK) {
    throw Trouble(nameOf(choices.compare) + ": " + error.message());
  }
  const std::unique_ptr<vrtkCatalogueChanges, ChangesDeleter> changes(found);
  const int code = vrtkCatalogueChangesBreaking(found) != 0 ? kFound : kSame;
  if (session.json()) {
    printJson(session, requireString([&](char** text, vrtkError** where) {
                         return vrtkCatalogueChangesJson(found, text, where);
                       }).get());
    return code;
  }
  const Colours& colours = session.colours();
  Output& out = session.out();
  const std::uint64_t count = vrtkCatalogueChangesCount(found);
  for (std::uint64_t i = 0; i < count; ++i) {
    const vrtkCatalogueChange& change = *vrtkCatalogueChangesGet(found, i);
    out << (change.breaking ? colours.ink(Ink::Error, "breaks  ") : "        ")
        << (*change.address != '\0' ? oneLine(change.address) : "the catalogue") << ": "
        << oneLine(change.message) << "\n";
  }
  if (count == 0) {
    out << "nothing has changed\n";
  } else {
    out << counted(count, "change") << ", of which " << grouped(vrtkCatalogueChangesBreaking(found))
        << " break old files or hosts\n";
  }
  return code;
}

int catalogue(Session& session, const Choices& choices, bool formGiven) {
  if (!choices.compare.empty()) {
    if (!choices.filter.empty() || formGiven || choices.output != "-") {
      throw Trouble(
          "--compare: it takes the whole saved catalogue and prints changes; leave out the class, "
          "--format and --output");
    }
    return compare(session, choices);
  }
  std::string form = choices.form;
  if (session.json()) {
    if (formGiven && form != "json") {
      throw Trouble("--json: it is another name for --format json; leave out one of the two");
    }
    form = "json";
  }
  const auto number =
      static_cast<std::uint32_t>(std::find(kForms.begin(), kForms.end(), form) - kForms.begin());
  const String text = requireString([&](char** to, vrtkError** error) {
    return vrtkCatalogue(number, choices.filter.empty() ? nullptr : choices.filter.c_str(), to,
                         error);
  });
  session.saveBytes(text.get(), choices.output);
  return kSame;
}

Run declare(Options& options) {
  auto choices = std::make_shared<Choices>();
  options.argument("CLASS[/GROUP]", Kind::Class, false, choices->filter,
                   "only this class or this group, as in Camera/General; scene for the settings of "
                   "scenes");
  options.choice("--format", "FORMAT", kForms, choices->form, "the form");
  options.text("-o,--output", "OUT", Kind::File, choices->output,
               "write this file; standard output without it");
  options.text("--compare", "OLD.json", Kind::JsonFile, choices->compare,
               "print what has changed since a saved catalogue (--format json)");
  const Options* const declared = &options;
  return [choices, declared](Session& session) {
    return catalogue(session, *choices, declared->given("--format"));
  };
}

}  // namespace

const Command kCatalogue = {
    "catalogue",
    "print the classes, groups and fields that scenes have",
    "Prints what the library tells about its classes: their slots, and for each field of their "
    "groups the type, the offset, the default, the limits, the unit and the description. The forms "
    "are text, JSON, a JSON Schema of scenes in JSON, a page for browsers, and Markdown.\n\n"
    "With --compare, prints what has changed since a catalogue was saved, and exits with 1 if an "
    "old "
    "file or an old host breaks: a name is gone, or a kind, a type, an offset or an order is "
    "another.",
    "The page for browsers fetches nothing, so it can be opened from a file.",
    "vrn catalogue Camera/General\n"
    "vrn catalogue --format html -o catalogue.html\n"
    "vrn catalogue --format json -o saved.json\n"
    "vrn catalogue --compare saved.json",
    kJson,
    declare};

}  // namespace vrn
