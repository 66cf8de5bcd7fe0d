// vrn info: what a scene file holds, in numbers.
#include <algorithm>
#include <memory>

#include "command.hpp"
#include "core/report.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

std::string idText(const std::uint8_t* id) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (int i = 0; i < 16; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += kDigits[id[i] >> 4U];
    text += kDigits[id[i] & 15U];
  }
  return text;
}

void printInfo(Session& session, const std::string& path, const vrtkReport* report) {
  const vrtkInfo& info = *vrtkReportInfo(report);
  const Colours& colours = session.colours();
  Output& out = session.out();
  const auto line = [&](const char* label, const std::string& text) {
    out << "  " << padded(label, 14) << text << "\n";
  };
  out << colours.ink(Ink::Heading, nameOf(path)) << "\n";
  line("id", idText(info.id));
  line("version", std::to_string(info.version));
  line("size",
       sizeText(info.size) + (info.size < 1024 ? "" : " (" + grouped(info.size) + " bytes)"));
  line("assets", sizeText(info.assetBytes));
  line("values", sizeText(info.valueBytes) + " in " + counted(info.valueBlocks, "block"));
  line("to open it", "at most " + sizeText(info.openMemory) + " of memory");
  const std::uint64_t warnings = vrtkReportWarningCount(report);
  if (warnings != 0) {
    line("warnings",
         colours.ink(Ink::Warning, grouped(warnings)) + "; run vrn check " + shellWord(path));
  }

  std::size_t width = 0;
  std::size_t digits = 0;
  std::uint64_t live = 0;
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
    const vrtkClassInfo objects = vrtkReportClass(report, i);
    if (objects.slots == 0) continue;
    live += objects.live;
    width = std::max(width, std::string(vrdmObjectName(i)).size());
    digits = std::max(digits, grouped(objects.live).size());
  }
  line("objects", grouped(live));
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
    const vrtkClassInfo objects = vrtkReportClass(report, i);
    if (objects.slots == 0) continue;
    const std::string count = grouped(objects.live);
    const std::string free = objects.slots == objects.live
                                 ? ""
                                 : "  and " + counted(objects.slots - objects.live, "free slot");
    out << "    " << padded(vrdmObjectName(i), width) << "  "
        << std::string(digits - count.size(), ' ') << count << colours.ink(Ink::Faint, free)
        << "\n";
  }
}

Run declare(Options& options) {
  struct Choices {
    std::vector<std::string> files;
  };
  auto choices = std::make_shared<Choices>();
  options.arguments("FILE", Kind::SceneFile, 1, choices->files,
                    "scene files; - for standard input");
  return [choices](Session& session) {
    return forEachReport(session, choices->files, 100,
                         [&](const std::string& path, const vrtkReport* report) {
                           if (!vrtkReportValid(report)) throw Trouble(refusalOf(path, report));
                           if (!session.json()) printInfo(session, path, report);
                           return kSame;
                         });
  };
}

}  // namespace

const Command kInfo = {"info",
                       "tell what a scene file holds, in numbers",
                       "Prints the id, the version and the size of scene files, the objects of "
                       "each class, the bytes of "
                       "assets and values, and the memory that opening the file takes at most. The "
                       "file is checked, but "
                       "not opened.",
                       "",
                       "vrn info box.vrnscene\nvrn info --json *.vrnscene",
                       kJson | kMemory,
                       declare};

}  // namespace vrn
