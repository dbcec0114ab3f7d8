#pragma once

class QLabel;

// Measures in points; see Geometry.h.

struct TextSize {
    double width = 0;
    double height = 0;
};

/// The size of a text field's text, broken into lines of at most this width; the zero size without text.
TextSize BoundingSize(const QLabel& field, double width);

/// Lets a text field grow downwards until its whole text fits. Its width becomes that of the text with 10 points on either
/// side, its height the text's, even where that is less than before; the lower edge moves down by the growth.
/// @return by how much it grew; 0 when it did not.
float AdjustFrameOfTextView(QLabel& field);
