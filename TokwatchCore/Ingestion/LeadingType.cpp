#include "TokwatchCore/Ingestion/LeadingType.h"

namespace tokwatch {
namespace {

class Reader {
  public:
    explicit Reader(std::string_view line) : rest(line) {}

    bool literal(char wanted) {
        skipSpace();
        if (rest.empty() || rest.front() != wanted) return false;
        rest.remove_prefix(1);
        return true;
    }

    /// A string without escapes.
    bool plainString(std::string_view& text) {
        if (!literal('"')) return false;
        const std::size_t end = rest.find('"');
        if (end == std::string_view::npos) return false;
        text = rest.substr(0, end);
        if (text.find('\\') != std::string_view::npos) return false;
        rest.remove_prefix(end + 1);
        return true;
    }

    /// A number, true, false or null; not checked, since the line is parsed in full before it
    /// counts.
    bool scalar() {
        skipSpace();
        const std::size_t end = rest.find_first_of(",}]\" \t\r");
        if (end == 0 || end == std::string_view::npos || rest.front() == '{' || rest.front() == '[')
            return false;
        rest.remove_prefix(end);
        return true;
    }

  private:
    void skipSpace() {
        while (!rest.empty() &&
               (rest.front() == ' ' || rest.front() == '\t' || rest.front() == '\r'))
            rest.remove_prefix(1);
    }

    std::string_view rest;
};

} // namespace

LeadingType leadingType(std::string_view line) {
    Reader reader(line);
    if (!reader.literal('{')) return {LeadingType::Kind::notAnObject, {}};
    while (true) {
        std::string_view key;
        std::string_view value;
        if (!reader.plainString(key) || !reader.literal(':')) return {};
        const bool isString = reader.plainString(value);
        if (key == "type")
            return isString ? LeadingType{LeadingType::Kind::found, value} : LeadingType{};
        if (!isString && !reader.scalar()) return {};
        if (!reader.literal(',')) return {};
    }
}

} // namespace tokwatch
