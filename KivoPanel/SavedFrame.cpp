#include "KivoPanel/SavedFrame.h"

#include <QGuiApplication>
#include <QScreen>
#include <QStringList>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>

namespace kivo {
namespace {

/// More than anybody plugs in; a list that only grows would never be looked at again.
constexpr std::size_t mostScreens = 8;
/// Pixels: what lies further out is no place.
constexpr int furthest = 1 << 16;

QRect movedInside(const QRect& frame, const QRect& visible) {
    const QSize size = frame.size().boundedTo(visible.size());
    const QSize room = visible.size() - size;
    const int x = std::clamp(frame.x(), visible.x(), visible.x() + room.width());
    const int y = std::clamp(frame.y(), visible.y(), visible.y() + room.height());
    return {QPoint(x, y), size};
}

int sharedPixels(const QRect& one, const QRect& other) {
    const QRect shared = one & other;
    return shared.width() * shared.height();
}

std::optional<SavedFrame> frameFrom(QStringView line) {
    std::array<int, 4> numbers{};
    for (int& number : numbers) {
        const qsizetype end = line.indexOf(u' ');
        bool isNumber = false;
        number = line.left(end < 0 ? line.size() : end).toInt(&isNumber);
        if (!isNumber || std::abs(number) > furthest) return std::nullopt;
        line = end < 0 ? QStringView() : line.mid(end + 1);
    }
    const auto [x, y, width, height] = numbers;
    if (width <= 0 || height <= 0) return std::nullopt;
    return SavedFrame{line.toString(), QRect(x, y, width, height)};
}

} // namespace

QList<ScreenArea> presentScreens() {
    QList<ScreenArea> areas;
    for (const QScreen* screen : QGuiApplication::screens())
        areas.append({screen->name(), screen->geometry(), screen->availableGeometry()});
    return areas;
}

QRect visiblePlace(const SavedFrames& frames, const QList<ScreenArea>& screens) {
    if (frames.empty() || screens.isEmpty()) return {};
    for (const SavedFrame& saved : frames)
        for (const ScreenArea& screen : screens)
            if (screen.name == saved.screen)
                return movedInside(saved.frame.translated(screen.whole.topLeft()), screen.visible);
    const ScreenArea& screen = screens.first();
    return movedInside(frames.front().frame.translated(screen.whole.topLeft()), screen.visible);
}

SavedFrames remembering(SavedFrames frames, const QRect& place, const QList<ScreenArea>& screens) {
    const auto most = std::ranges::max_element(screens, {}, [&place](const ScreenArea& screen) {
        return sharedPixels(place, screen.whole);
    });
    if (most == screens.end()) return frames;
    std::erase_if(frames, [&](const SavedFrame& each) { return each.screen == most->name; });
    frames.insert(frames.begin(), {most->name, place.translated(-most->whole.topLeft())});
    frames.resize(std::min(frames.size(), mostScreens));
    return frames;
}

QString textOf(const SavedFrames& frames) {
    QStringList lines;
    for (const auto& [screen, frame] : frames)
        lines.append(QStringLiteral("%1 %2 %3 %4 ")
                         .arg(frame.x())
                         .arg(frame.y())
                         .arg(frame.width())
                         .arg(frame.height()) +
                     screen);
    return lines.join(u'\n');
}

SavedFrames savedFramesFrom(QStringView text) {
    SavedFrames frames;
    for (const QStringView line : text.split(u'\n', Qt::SkipEmptyParts))
        if (auto frame = frameFrom(line)) frames.push_back(std::move(*frame));
    return frames;
}

} // namespace kivo
