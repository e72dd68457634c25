// Contrast.h: colours that can be read, whatever palette the desktop has.
//
// A colour with a meaning is written down as it is on a light window; whoever paints it asks here
// for one that can be read on the background that is really there. Header only: the modules, the
// host library and the client share it.
#ifndef ORVO_FRAME_CONTRAST_H
#define ORVO_FRAME_CONTRAST_H

#include <QColor>
#include <QPalette>

#include <algorithm>
#include <cmath>

namespace orvo {

/// Of text and its background, as the accessibility guidelines for the web ask for it.
constexpr double leastContrast = 4.5;
/// The same of what is no text and still has to be seen, as the outline of a field.
constexpr double leastShapeContrast = 3;

/// The relative luminance of the guidelines, 0 (black) to 1 (white).
inline double luminanceOf(const QColor& color) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

/// 1 (none) to 21 (black and white), the same in both directions.
inline double contrastOf(const QColor& one, const QColor& other) {
    const auto [dark, light] = std::minmax({luminanceOf(one), luminanceOf(other)});
    return (light + 0.05) / (dark + 0.05);
}

/// Whether windows of that palette show light letters on dark.
inline bool isDark(const QPalette& palette) {
    return luminanceOf(palette.color(QPalette::Active, QPalette::Base)) <
           luminanceOf(palette.color(QPalette::Active, QPalette::Text));
}

/// The colour itself if it can be read on that background, else the nearest of its hue that can.
inline QColor readable(const QColor& color, const QColor& background,
                       double least = leastContrast) {
    if (contrastOf(color, background) >= least)
        return color;
    const QColor hsl = color.toHsl();
    const int step = luminanceOf(background) < 0.18 ? 1 : -1; // away from the background
    QColor result = hsl;
    for (int light = hsl.lightness(); light >= 0 && light <= 255; light += step) {
        result.setHsl(hsl.hslHue(), hsl.hslSaturation(), light);
        if (contrastOf(result, background) >= least)
            break;
    }
    return result.toRgb();
}

/// A background that is written down for light windows, for a window of that palette: on a dark one
/// as far from black as it was from white.
inline QColor ground(const QColor& light, const QPalette& palette) {
    if (!isDark(palette))
        return light;
    const QColor hsl = light.toHsl();
    const int base = palette.color(QPalette::Active, QPalette::Base).toHsl().lightness();
    return QColor::fromHsl(hsl.hslHue(), hsl.hslSaturation() / 2,
                           std::min(255, base + (255 - hsl.lightness())))
        .toRgb();
}

} // namespace orvo

#endif
