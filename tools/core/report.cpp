#include "core/report.hpp"

#include <algorithm>

#include "core/text.hpp"

namespace vrn {

std::string refusalOf(const std::string& path, const vrtkReport* report) {
  const std::string start = nameOf(path) + ": it is not safe to read";
  const std::string end = "; run vrn check " + shellWord(path);
  for (std::uint64_t i = 0; i < vrtkReportMessageCount(report); ++i) {
    const vrtkMessage* const message = vrtkReportMessage(report, i);
    if (message->severity != VRTK_ERROR) continue;
    std::string text = start + ": " + message->code;
    if (message->offset != VRTK_NO_OFFSET) {
      text.append(" at byte ").append(std::to_string(message->offset));
    }
    if (*message->address != '\0') text.append(", ").append(message->address);
    return text.append(": ").append(message->message).append(end);
  }
  return start + end;
}

int forEachReport(Session& session, const std::vector<std::string>& paths,
                  std::uint64_t maxMessages,
                  const std::function<int(const std::string&, const vrtkReport*)>& use) {
  int worst = kSame;
  const bool several = paths.size() > 1;
  if (session.json() && several) session.out() << "[\n";
  for (std::size_t i = 0; i < paths.size(); ++i) {
    std::string document;
    try {
      const Report report = session.check(paths[i], maxMessages);
      worst = std::max(worst, use(paths[i], report.get()));
      if (session.json()) {
        document = requireString([&](char** text, vrtkError** error) {
                     return vrtkReportJson(report.get(), text, error);
                   }).get();
      }
    } catch (const Trouble& trouble) {
      session.tell(trouble.what());
      worst = kTrouble;
      if (several) {
        document = "{ \"file\": " + jsonString(paths[i]) +
                   ", \"valid\": false, \"trouble\": " + jsonString(trouble.what()) + " }";
      }
    }
    if (!session.json() || document.empty()) continue;
    while (document.back() == '\n') document.pop_back();
    session.out() << document << (several && i + 1 < paths.size() ? ",\n" : "\n");
  }
  if (session.json() && several) session.out() << "]\n";
  return worst;
}

}  // namespace vrn
