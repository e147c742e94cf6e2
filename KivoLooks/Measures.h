#pragma once

#include "KivoLooks/Palette.h"

#include <QFont>
#include <QObject>
#include <QString>

namespace kivo {

/// Sizes of type in pixels, on a scale that follows the desktop's font.
struct TypeScale {
    Q_GADGET
    Q_PROPERTY(QString family MEMBER family)
    Q_PROPERTY(int caption MEMBER caption)
    Q_PROPERTY(int body MEMBER body)
    Q_PROPERTY(int title MEMBER title)
    Q_PROPERTY(int figure MEMBER figure)
    Q_PROPERTY(int headline MEMBER headline)
  public:
    QString family;
    int caption = 11;
    int body = 13;
    int title = 15;
    int figure = 20;
    int headline = 32;

    /// For the application's font. Larger fonts scale everything, up to what a fixed width carries.
    static TypeScale of(const QFont& font);
    friend bool operator==(const TypeScale&, const TypeScale&) = default;
};

/// Distances in pixels: multiples of four.
struct Spacing {
    Q_GADGET
    Q_PROPERTY(int xs MEMBER xs CONSTANT)
    Q_PROPERTY(int s MEMBER s CONSTANT)
    Q_PROPERTY(int m MEMBER m CONSTANT)
    Q_PROPERTY(int l MEMBER l CONSTANT)
    Q_PROPERTY(int xl MEMBER xl CONSTANT)
    Q_PROPERTY(int radius MEMBER radius CONSTANT)
    Q_PROPERTY(int cardRadius MEMBER cardRadius CONSTANT)
    Q_PROPERTY(int control MEMBER control CONSTANT)
  public:
    int xs = 4;
    int s = 8;
    int m = 12;
    int l = 16;
    int xl = 24;
    int radius = 6;      ///< of controls
    int cardRadius = 12; ///< of cards and windows
    int control = 32;    ///< height of a control
};

/// Lengths of transitions in milliseconds; nothing moves when the desktop asks for that.
struct Motion {
    Q_GADGET
    Q_PROPERTY(int quick MEMBER quick)
    Q_PROPERTY(int calm MEMBER calm)
    Q_PROPERTY(bool spins MEMBER spins)
  public:
    int quick = 120;
    int calm = 220;
    bool spins = true; ///< whether a sign of work may turn

    static Motion of(const Appearance& appearance);
};

} // namespace kivo
