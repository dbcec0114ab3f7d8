#pragma once

#include <QPixmap>
#include <string>

/// An image of the main bundle's resources by its file name. A file may hold the image several times, for screens of different
/// density, from small to large; the first that is large enough is taken.
/// @param points the size to draw it at, at most: it keeps its proportions. @param pixelRatio the screen's. @return a null image when there is none.
QPixmap ImageNamed(const std::string& name, QSizeF points, double pixelRatio);
