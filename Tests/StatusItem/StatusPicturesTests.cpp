#include "Tokwatch/Pictures/StatusPictures.h"

#include "KivoLooks/Contrast.h"

#include <gtest/gtest.h>

#include <set>

namespace tokwatch {
namespace {

const Ink black{Qt::black};
constexpr Severity severities[] = {Severity::normal, Severity::warning, Severity::critical};

/// How much ink is from this row on, in whole pixels.
double inkFrom(int row, const QImage& picture) {
    double sum = 0;
    for (int y = row; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            sum += qAlpha(picture.pixel(x, y)) / 255.0;
    return sum;
}

TEST(GaugePicture, ShowsEachNumberDifferentlyAndFillsItsBarAsFarAsIsLeft) {
    for (const int side : {16, 22, 24, 32, 48, 64}) {
        std::set<QByteArray> numbers;
        double before = -1;
        for (int percent = 0; percent <= 100; ++percent) {
            const QImage picture = gaugePicture(percent, black, side);
            const double filled = inkFrom(side - 2, picture);
            EXPECT_GE(filled, before) << percent << " at " << side;
            EXPECT_TRUE(percent != 1 || filled > before) << "something left is something to see";
            before = filled;
            const QImage number = picture.copy(0, 0, side, side * 3 / 4);
            numbers.insert(QByteArray(reinterpret_cast<const char*>(number.constBits()),
                                      number.sizeInBytes()));
        }
        EXPECT_EQ(numbers.size(), 101U) << "at " << side;
    }
}

TEST(StatusTint, StandsOutFromThePanelsOfCommonDesktopsAndFadesWithAge) {
    for (const auto& [isDark, panels] : {std::pair{true, "#353535 #31363b #2b303b #1e1e2e #000000"},
                                         {false, "#f6f5f4 #eff0f1 #f2f2f2 #ffffff"}}) {
        std::set<QRgb> colours;
        for (const Severity severity : severities) {
            const QColor tint = statusTint(severity, isDark);
            colours.insert(tint.rgb());
            for (const QString& panel : QString(panels).split(' '))
                EXPECT_GE(kivo::contrastRatio(tint, QColor(panel)), 4.5)
                    << tint.name().toStdString() << " on " << panel.toStdString();
        }
        EXPECT_EQ(colours.size(), 3U);
        const auto ink = [dark = isDark](bool isOld) {
            return inkFrom(0, markPicture(ProviderID::grok,
                                          statusInk({Severity::normal, dark, false, isOld}), 22));
        };
        EXPECT_LT(ink(true), 0.7 * ink(false));
    }
}

} // namespace
} // namespace tokwatch
