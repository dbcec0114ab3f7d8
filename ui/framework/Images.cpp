#include "ui/framework/Images.h"

#include "util/Bundle.h"

#include <QFile>
#include <QImageReader>

QPixmap ImageNamed(const std::string& name, QSizeF points, double pixelRatio)
{
    QImageReader reader(QFile::decodeName((MainBundleResources() + "/" + name).c_str()));
    const QSize wanted = (points * pixelRatio).toSize();
    QImage best;
    // The smallest that is large enough, else the largest.
    const int count = reader.imageCount();
    for (int index = 0; index < count && (index == 0 || reader.jumpToImage(index)); ++index) {
        const QImage image = reader.read();
        const bool isBetter = best.width() < wanted.width()
            ? image.width() > best.width()
            : image.width() < best.width() && image.width() >= wanted.width();
        if (isBetter)
            best = image;
    }
    if (best.isNull())
        return {};
    QPixmap pixmap = QPixmap::fromImage(best.scaled(wanted, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    pixmap.setDevicePixelRatio(pixelRatio);
    return pixmap;
}
