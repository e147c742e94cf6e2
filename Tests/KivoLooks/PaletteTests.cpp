#include "KivoLooks/Contrast.h"
#include "KivoLooks/Palette.h"

#include <QMetaProperty>
#include <QStringList>

#include <gtest/gtest.h>

#include <string>

namespace kivo {
namespace {

constexpr const char* surfaces = "canvas card raised track hover pressed";
constexpr const char* grounds = "canvas card";
constexpr double readable = 4.5;
constexpr double enhanced = 7;
constexpr double visible = 3;

class PaletteTest : public ::testing::TestWithParam<Appearance> {
  protected:
    Palette palette = Palette::of(GetParam());

    /// The colour, or the colours, that QML knows by the name.
    QList<QColor> named(const QString& name) const {
        const QMetaObject& meta = Palette::staticMetaObject;
        const QVariant found =
            meta.property(meta.indexOfProperty(qPrintable(name))).readOnGadget(&palette);
        EXPECT_TRUE(found.isValid()) << name.toStdString();
        return found.canConvert<QList<QColor>>() ? found.value<QList<QColor>>()
                                                 : QList<QColor>{found.value<QColor>()};
    }
    void expectContrast(const char* marks, const char* on, double least) const {
        for (const QString& mark : QString(marks).split(' '))
            for (const QColor& color : named(mark))
                for (const QString& ground : QString(on).split(' '))
                    EXPECT_GE(contrastRatio(color, named(ground).first()), least)
                        << mark.toStdString() << " " << color.name().toStdString() << " on "
                        << ground.toStdString();
    }
};

TEST_P(PaletteTest, StandsOutFromWhatCarriesIt) {
    expectContrast("text secondaryText", surfaces, readable);
    expectContrast("accentText warningText criticalText", grounds, readable);
    expectContrast("onAccent", "accent", readable);
    expectContrast("accent warning critical muted outline focus series", grounds, visible);
    expectContrast("parts", "card", visible);
    // A bar's fill has to be told from the rest of the bar, and symbols from a chosen entry.
    expectContrast("accent warning critical muted accentText focus timeMark", "track", visible);
    expectContrast("knob", "outline", visible);
    if (!GetParam().highContrast) return;
    expectContrast("text secondaryText accentText warningText criticalText", grounds, enhanced);
    expectContrast("hairline", grounds, visible);
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
                                           Appearance{.dark = true, .highContrast = true}));

TEST(Contrast, IsAsTheGuidelinesDefineIt) {
    EXPECT_DOUBLE_EQ(contrastRatio(Qt::white, Qt::black), 21);
    EXPECT_NEAR(contrastRatio(QColor(0x76, 0x76, 0x76), Qt::white), 4.54, 0.005);
}

} // namespace
} // namespace kivo
