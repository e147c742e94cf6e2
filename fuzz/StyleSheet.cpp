#include "KivoMenuBar/BarStyleSheet.h"
#include "fuzz/Target.h"

namespace tokwatch::fuzzing {
namespace {

std::optional<QColor> colourOf(const std::filesystem::path& file) {
    return kivo::barTextColour(QString::fromStdString(file.string()));
}

/// The sheet imports itself where its name is in it, and a palette.
void runStyleSheet(std::string_view input) {
    // Whatever else is imported is a file of this machine's.
    if (input.find('/') != std::string_view::npos) return;
    const std::filesystem::path file = scratchFile("style.css");
    writeFile(scratchFile("palette.css"), "@define-color text #CDD6F4; #tray { color: @text; }");
    writeFile(file, input);
    const auto colour = colourOf(file);
    require(!colour || colour->isValid(), "a colour is one");
    writeFile(scratchFile("importing.css"), "/* a comment */ @import 'style.css';");
    require(input.find("importing.css") != std::string_view::npos ||
                colourOf(scratchFile("importing.css")) == colour,
            "a sheet says the same where it is imported");
}

const Targets styleSheet{{"style-sheet", runStyleSheet}};

} // namespace
} // namespace tokwatch::fuzzing
