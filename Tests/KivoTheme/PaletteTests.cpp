#include "KivoTheme/Contrast.h"
#include "KivoTheme/Palette.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace kivo {
namespace {

constexpr double readable = 4.5;
constexpr double visible = 3;

struct Named {
    const char* name;
    QColor color;
};

class PaletteTest : public ::testing::TestWithParam<Appearance> {
  protected:
    Palette palette = Palette::of(GetParam());

    std::vector<Named> surfaces() const {
        return {{"canvas", palette.canvas}, {"card", palette.card},   {"raised", palette.raised},
                {"track", palette.track},   {"hover", palette.hover}, {"pressed", palette.pressed}};
    }
    std::vector<Named> grounds() const {
        return {{"canvas", palette.canvas}, {"card", palette.card}};
    }
    static void expectContrast(const std::vector<Named>& marks, const std::vector<Named>& on,
                               double least) {
        for (const Named& mark : marks)
            for (const Named& ground : on)
                EXPECT_GE(contrastRatio(mark.color, ground.color), least)
                    << mark.name << " " << mark.color.name().toStdString() << " on " << ground.name
                    << " " << ground.color.name().toStdString();
    }
    static std::vector<Named> all(const char* name, const QList<QColor>& colors) {
        std::vector<Named> named;
        for (const QColor& color : colors)
            named.push_back({name, color});
        return named;
    }
};

TEST_P(PaletteTest, TextsAreReadableOnWhatCarriesThem) {
    expectContrast({{"text", palette.text}, {"secondaryText", palette.secondaryText}}, surfaces(),
                   readable);
    expectContrast({{"accentText", palette.accentText},
                    {"warningText", palette.warningText},
                    {"criticalText", palette.criticalText}},
                   grounds(), readable);
    expectContrast({{"onAccent", palette.onAccent}}, {{"accent", palette.accent}}, readable);
}

TEST_P(PaletteTest, HighContrastIsMoreThanEnough) {
    if (!GetParam().highContrast) return;
    constexpr double enhanced = 7;
    expectContrast({{"text", palette.text},
                    {"secondaryText", palette.secondaryText},
                    {"accentText", palette.accentText},
                    {"warningText", palette.warningText},
                    {"criticalText", palette.criticalText}},
                   grounds(), enhanced);
    expectContrast({{"hairline", palette.hairline}}, grounds(), visible);
}

TEST_P(PaletteTest, MarksStandOutFromTheirGround) {
    expectContrast({{"accent", palette.accent},
                    {"warning", palette.warning},
                    {"critical", palette.critical},
                    {"muted", palette.muted},
                    {"outline", palette.outline},
                    {"focus", palette.focus}},
                   grounds(), visible);
    expectContrast(all("series", palette.series), grounds(), visible);
    expectContrast(all("part", palette.parts), {{"card", palette.card}}, visible);
    // A bar's fill has to be told from the rest of the bar, and symbols from a chosen entry.
    expectContrast({{"accent", palette.accent},
                    {"warning", palette.warning},
                    {"critical", palette.critical},
                    {"muted", palette.muted},
                    {"accentText", palette.accentText},
                    {"focus", palette.focus},
                    {"timeMark", palette.timeMark}},
                   {{"track", palette.track}}, visible);
}

TEST_P(PaletteTest, KnobsStandOutFromASwitchThatIsOff) {
    expectContrast({{"knob", palette.knob}}, {{"outline", palette.outline}}, visible);
}

TEST_P(PaletteTest, IntensityGrowsStepByStep) {
    for (qsizetype at = 1; at < palette.intensity.size(); ++at)
        EXPECT_GE(contrastRatio(palette.intensity[at], palette.card),
                  1.2 * contrastRatio(palette.intensity[at - 1], palette.card))
            << at;
    EXPECT_GE(contrastRatio(palette.intensity.back(), palette.card), visible);
}

INSTANTIATE_TEST_SUITE_P(Appearances, PaletteTest,
                         ::testing::Values(Appearance{}, Appearance{.dark = true},
                                           Appearance{.highContrast = true},
                                           Appearance{.dark = true, .highContrast = true}),
                         [](const auto& each) {
                             return std::string(each.param.dark ? "Dark" : "Light") +
                                    (each.param.highContrast ? "HighContrast" : "");
                         });

TEST(Contrast, IsAsTheGuidelinesDefineIt) {
    EXPECT_DOUBLE_EQ(contrastRatio(Qt::black, Qt::white), 21);
    EXPECT_DOUBLE_EQ(contrastRatio(Qt::white, Qt::black), 21);
    EXPECT_DOUBLE_EQ(contrastRatio(Qt::red, Qt::red), 1);
    EXPECT_NEAR(contrastRatio(QColor(0x76, 0x76, 0x76), Qt::white), 4.54, 0.005);
}

} // namespace
} // namespace kivo
