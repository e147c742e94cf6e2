#include "Tokwatch/Pictures/StatusPictures.h"

#include "Tests/StatusItem/GuiApplication.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tokwatch/Pictures/ProviderMarks.h"
#include "Tokwatch/StatusItem/NamedIcons.h"
#include "Tokwatch/StatusItem/StatusTint.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>
#include <vector>

namespace tokwatch {
namespace {

const Ink black{Qt::black};
constexpr int sides[] = {16, 22, 24, 32, 48, 64};

std::vector<std::optional<ProviderID>> allMarks() {
    std::vector<std::optional<ProviderID>> marks{std::nullopt};
    marks.insert(marks.end(), allCases<ProviderID>.begin(), allCases<ProviderID>.end());
    return marks;
}

/// How much ink is within these rows, in whole pixels.
double inkIn(const QImage& picture, int firstRow, int lastRow) {
    double sum = 0;
    for (int y = firstRow; y <= lastRow; ++y)
        for (int x = 0; x < picture.width(); ++x)
            sum += qAlpha(picture.pixel(x, y)) / 255.0;
    return sum;
}
double ink(const QImage& picture) {
    return inkIn(picture, 0, picture.height() - 1);
}

/// The rows or columns that hold ink, as the first and the last.
std::pair<int, int> extent(const QImage& picture, bool rows, int from = 0) {
    std::pair<int, int> found{-1, -1};
    for (int y = 0; y < picture.height(); ++y)
        for (int x = from; x < picture.width(); ++x)
            if (qAlpha(picture.pixel(x, y)) >= 96) {
                const int at = rows ? y : x;
                if (found.first < 0 || at < found.first) found.first = at;
                found.second = std::max(found.second, at);
            }
    return found;
}

TEST(Marks, FillTheirSquareAndDifferFromEachOther) {
    for (const int side : sides) {
        std::vector<QImage> pictures;
        for (const auto& provider : allMarks()) {
            const QImage picture = markPicture(provider, black, side);
            EXPECT_EQ(picture.size(), QSize(side, side));
            EXPECT_GT(ink(picture), 0.18 * side * side) << side;
            EXPECT_LT(ink(picture), 0.8 * side * side) << side;
            const QRectF outline = mark(provider).boundingRect();
            EXPECT_TRUE(QRectF(0, 0, markSide, markSide).contains(outline));
            EXPECT_GE(std::max(outline.width(), outline.height()), 0.7 * markSide);
            for (const QImage& other : pictures) {
                double difference = 0;
                for (int y = 0; y < side; ++y)
                    for (int x = 0; x < side; ++x)
                        difference +=
                            std::abs(qAlpha(picture.pixel(x, y)) - qAlpha(other.pixel(x, y))) /
                            255.0;
                EXPECT_GT(difference, 0.15 * side * side) << "two marks are alike at " << side;
            }
            pictures.push_back(picture);
        }
    }
}

TEST(GaugePicture, FillsItsBarAsFarAsIsLeft) {
    for (const int side : sides) {
        double before = -1;
        for (int percent = 0; percent <= 100; ++percent) {
            const QImage picture = gaugePicture(percent, black, side);
            const double filled = inkIn(picture, side - 2, side - 1);
            EXPECT_GE(filled, before) << percent << " at " << side;
            if (percent == 1) {
                EXPECT_GT(filled, before) << "something left is something to see";
            }
            before = filled;
        }
        EXPECT_EQ(gaugePicture(140, black, side), gaugePicture(100, black, side));
        EXPECT_EQ(gaugePicture(-3, black, side), gaugePicture(0, black, side));
    }
}

TEST(GaugePicture, ShowsEachNumberLargeAndDifferently) {
    for (const int side : sides) {
        std::set<QByteArray> numbers;
        for (int percent = 0; percent <= 100; ++percent) {
            const QImage number = gaugePicture(percent, black, side).copy(0, 0, side, side * 3 / 4);
            EXPECT_EQ(extent(number, true).first, 0) << percent << " at " << side;
            EXPECT_EQ(extent(number, true).second, number.height() - 1) << percent;
            numbers.insert(QByteArray(reinterpret_cast<const char*>(number.constBits()),
                                      number.sizeInBytes()));
        }
        EXPECT_EQ(numbers.size(), 101U) << "at " << side;
    }
}

TEST(TitlePicture, KeepsItsWidthWhileDigitsCount) {
    testing::needGuiApplication();
    for (const int height : {16, 21, 42}) {
        const auto width = [&](const char* text) {
            return titlePicture(ProviderID::claude, QString::fromUtf8(text), black, height).width();
        };
        EXPECT_EQ(width("42% · 3h 5m"), width("11% · 1h 1m"));
        EXPECT_EQ(width("88%"), width("10%"));
        EXPECT_GT(width("100%"), width("10%"));
    }
}

TEST(TitlePicture, SetsMarkAndDigitsOnOneMiddle) {
    testing::needGuiApplication();
    for (const int height : {16, 21, 42}) {
        const QImage picture = titlePicture(ProviderID::claude, "0", black, height);
        const int markEnd = static_cast<int>(std::lround(height * 19 / 21.0));
        const auto [markTop, markBottom] = extent(picture.copy(0, 0, markEnd, height), true);
        const auto [digitTop, digitBottom] = extent(picture, true, markEnd);
        EXPECT_NEAR(markTop + markBottom, digitTop + digitBottom, 1) << height;
        EXPECT_NEAR(markTop + markBottom, height - 1, 1) << height;
        EXPECT_LT(extent(picture, false).second, picture.width() - 1) << "the text is cut off";
    }
}

TEST(StatusInk, HasAHaloWhereTheToneIsAGuessAndFadesWithAge) {
    for (const bool dark : {false, true}) {
        const auto inkOf = [dark](bool isGuess, bool isOld) {
            return ink(markPicture(ProviderID::grok,
                                   statusInk({Severity::normal, dark, isGuess, isOld}), 22));
        };
        EXPECT_EQ(statusInk({Severity::normal, dark}).halo.alpha(), 0);
        EXPECT_GT(inkOf(true, false), inkOf(false, false));
        EXPECT_LT(inkOf(false, true), 0.7 * inkOf(false, false));
    }
}

double luminance(QColor colour) {
    const auto linear = [](double share) {
        return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

TEST(StatusTint, StandsOutFromThePanelsOfCommonDesktops) {
    const struct {
        bool isDark;
        std::vector<const char*> panels;
    } tones[] = {{true, {"#353535", "#31363b", "#2b303b", "#1e1e2e", "#000000"}},
                 {false, {"#f6f5f4", "#eff0f1", "#f2f2f2", "#ffffff"}}};
    for (const auto& tone : tones) {
        std::set<QRgb> colours;
        for (const Severity severity : {Severity::normal, Severity::warning, Severity::critical}) {
            const QColor tint = statusTint(severity, tone.isDark);
            colours.insert(tint.rgb());
            for (const char* panel : tone.panels) {
                const double one = luminance(tint) + 0.05;
                const double other = luminance(QColor(panel)) + 0.05;
                EXPECT_GE(std::max(one, other) / std::min(one, other), 4.5)
                    << tint.name().toStdString() << " on " << panel;
            }
        }
        EXPECT_EQ(colours.size(), 3U);
        const QColor orange = statusTint(Severity::warning, tone.isDark);
        const QColor red = statusTint(Severity::critical, tone.isDark);
        EXPECT_THAT(orange.hue(), ::testing::AllOf(::testing::Gt(20), ::testing::Lt(45)));
        EXPECT_TRUE(red.hue() < 10 || red.hue() > 350) << red.hue();
    }
}

TEST(NamedIcons, AreWrittenWhereTheirNamesLead) {
    testing::TemporaryDirectory home;
    NamedIcons icons(home / "icons");
    ASSERT_TRUE(icons.write());
    std::set<QString> names;
    for (const auto& provider : allMarks())
        for (const Severity severity : {Severity::normal, Severity::warning, Severity::critical})
            for (const int kind : {0, 1, 2, 3}) {
                const QString name =
                    icons.name(provider, {severity, kind % 2 == 1, false, kind > 1});
                names.insert(name);
                for (const char* extension : {".png", ".symbolic.png"}) {
                    const auto file =
                        home / ("icons/hicolor/22x22/apps/" + name.toStdString() + extension);
                    const bool isMask = name.endsWith("-symbolic");
                    EXPECT_EQ(std::filesystem::exists(file),
                              isMask == std::string_view(extension).starts_with(".symbolic"))
                        << file;
                }
            }
    EXPECT_EQ(names.size(), allMarks().size() * 10)
        << "a mask, and two tints in two tones, new and old";

    home.write("file", "");
    EXPECT_FALSE(NamedIcons(home / "file").write());
}

} // namespace
} // namespace tokwatch
