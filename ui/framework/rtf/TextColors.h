#pragma once

#include <QColor>
#include <array>
#include <optional>
#include <string_view>
#include <vector>

namespace rtf {

/// The text and its background in colors of their own; nothing where the view's palette decides.
struct TextColors {
    std::optional<QColor> foreground;
    std::optional<QColor> background;
};

class ColorTable {
public:
    /// @param part red, green or blue, 0 … 2, of the color that the next semicolon ends.
    void setPart(int part, int value);
    /// @param bytes the table's text, in which each semicolon ends a color.
    void takeText(std::string_view bytes);

    /// @return nothing for 0, for the automatic color and for numbers that the table lacks.
    std::optional<QColor> find(int number) const;
    /// Leaves to the palette what cannot be read on every palette otherwise.
    TextColors textColors(int foreground, int background) const;

private:
    std::vector<std::optional<QColor>> fColors;
    std::optional<std::array<int, 3>> fNext; ///< nothing: the automatic color
};

}
