#pragma once

#include <QColor>
#include <QList>
#include <QObject>

namespace kivo {

/// The looks that the desktop can ask for.
struct Appearance {
    bool dark = false;
    bool highContrast = false;
    bool reducedMotion = false;
    friend bool operator==(const Appearance&, const Appearance&) = default;
};

/// All colours of the interface by what they are for. Texts have at least 4.5 : 1 on every surface
/// that carries them, marks and fills at least 3 : 1.
struct Palette {
    Q_GADGET
    Q_PROPERTY(QColor canvas MEMBER canvas)
    Q_PROPERTY(QColor card MEMBER card)
    Q_PROPERTY(QColor raised MEMBER raised)
    Q_PROPERTY(QColor track MEMBER track)
    Q_PROPERTY(QColor hover MEMBER hover)
    Q_PROPERTY(QColor pressed MEMBER pressed)
    Q_PROPERTY(QColor hairline MEMBER hairline)
    Q_PROPERTY(QColor outline MEMBER outline)
    Q_PROPERTY(QColor text MEMBER text)
    Q_PROPERTY(QColor secondaryText MEMBER secondaryText)
    Q_PROPERTY(QColor accent MEMBER accent)
    Q_PROPERTY(QColor accentText MEMBER accentText)
    Q_PROPERTY(QColor onAccent MEMBER onAccent)
    Q_PROPERTY(QColor focus MEMBER focus)
    Q_PROPERTY(QColor knob MEMBER knob)
    Q_PROPERTY(QColor timeMark MEMBER timeMark)
    Q_PROPERTY(QColor warning MEMBER warning)
    Q_PROPERTY(QColor warningText MEMBER warningText)
    Q_PROPERTY(QColor critical MEMBER critical)
    Q_PROPERTY(QColor criticalText MEMBER criticalText)
    Q_PROPERTY(QColor muted MEMBER muted)
    Q_PROPERTY(QList<QColor> series MEMBER series)
    Q_PROPERTY(QList<QColor> parts MEMBER parts)
    Q_PROPERTY(QList<QColor> intensity MEMBER intensity)
  public:
    // Surfaces, from the window up.
    QColor canvas;
    QColor card;
    QColor raised; ///< the selected part of a control
    QColor track;  ///< the empty part of a bar, the bed of a control
    QColor hover;
    QColor pressed;
    QColor hairline; ///< decorative separation
    QColor outline;  ///< the border that makes a control recognisable

    QColor text;
    QColor secondaryText;
    QColor accent;     ///< fills
    QColor accentText; ///< links and text buttons
    QColor onAccent;   ///< text on an accent fill
    QColor focus;
    QColor knob; ///< of a switch or slider, on its track or accent

    QColor timeMark; ///< crosses both the filled and the empty part of a bar
    QColor warning;
    QColor warningText;
    QColor critical;
    QColor criticalText;
    QColor muted; ///< the fill of numbers that are no longer current

    QList<QColor> series;    ///< kinds side by side, told apart without seeing hue
    QList<QColor> parts;     ///< parts of one whole, strongest first
    QList<QColor> intensity; ///< nothing, then little to much

    static Palette of(const Appearance& appearance);
    friend bool operator==(const Palette&, const Palette&) = default;
};

} // namespace kivo
