#include "Tokwatch/StatusItem/NamedIcons.h"

#include "Platform/System/PrivateFiles.h"
#include "Tokwatch/Pictures/StatusPictures.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>

#include <array>
#include <system_error>
#include <vector>

namespace tokwatch {
namespace {

constexpr std::array sides{16, 22, 24, 32, 48};
constexpr std::array severities{Severity::normal, Severity::warning, Severity::critical};

std::vector<std::optional<ProviderID>> allMarks() {
    std::vector<std::optional<ProviderID>> marks{std::nullopt};
    marks.insert(marks.end(), allCases<ProviderID>.begin(), allCases<ProviderID>.end());
    return marks;
}

/// Throws std::system_error.
void writePicture(const QImage& picture, const std::filesystem::path& file) {
    QByteArray encoded;
    QBuffer buffer(&encoded);
    if (!picture.save(&buffer, "PNG"))
        throw std::system_error(std::make_error_code(std::errc::io_error));
    replaceUnlessSame(file, {encoded.constData(), static_cast<std::size_t>(encoded.size())});
}

/// Symbolic pictures are masks: their alpha alone counts. The suffix tells the panel.
std::string_view suffix(Severity severity) {
    return severity == Severity::normal ? ".symbolic.png" : ".png";
}

} // namespace

NamedIcons::NamedIcons(std::filesystem::path ownDirectory) : directory(std::move(ownDirectory)) {}

QString NamedIcons::themePath() const {
    return QString::fromStdString(directory.string());
}

QString NamedIcons::name(std::optional<ProviderID> provider, const InkChoice& ink) const {
    std::string name = "tokwatch-status-";
    name += provider ? rawValue(*provider) : "gauge";
    if (ink.isOld) name += "-old";
    if (ink.severity == Severity::normal)
        name += "-symbolic";
    else
        name.append("-").append(nameOf(ink.severity)).append(ink.onDarkPanel ? "-dark" : "-light");
    return QString::fromStdString(name);
}

bool NamedIcons::write() {
    if (isWritten) return true;
    // It would be another place in each directory, and the panel's is not ours.
    if (!directory.is_absolute()) return false;
    try {
        writeAll();
        isWritten = true;
    } catch (const std::system_error&) {
        // A full disk may have room again by the next time.
    }
    return isWritten;
}

void NamedIcons::writeAll() const {
    for (const int side : sides) {
        const std::string square = std::to_string(side);
        const auto folder = directory / "hicolor" / (square + "x" + square) / "apps";
        makePrivateDirectory(folder);
        for (const auto& provider : allMarks())
            for (const Severity severity : severities)
                for (const bool dark : {false, true})
                    for (const bool isOld : {false, true}) {
                        const InkChoice choice{severity, dark, false, isOld};
                        Ink ink = statusInk(choice);
                        if (severity == Severity::normal)
                            ink.colour.setRgb(0, 0, 0, ink.colour.alpha());
                        const std::string file =
                            name(provider, choice).toStdString() + std::string(suffix(severity));
                        writePicture(markPicture(provider, ink, side), folder / file);
                    }
    }
}

} // namespace tokwatch
