#include "ui/framework/Images.h"

#include "util/Bundle.h"

#include <QFile>
#include <QImageReader>

QPixmap ImageNamed(const std::string& name, QSizeF points, double pixelRatio)
{
    QImageReader reader(QFile::decodeName((MainBundleResources() + "/" + name).c_str()));
    const QSize wanted = (points * pixelRatio).toSize();
    const int count = reader.imageCount();
    QImage image = reader.read();
    for (int index = 1; index < count && image.width() < wanted.width() && reader.jumpToImage(index); ++index)
        image = reader.read();
    if (image.isNull())
        return {};
    QPixmap pixmap = QPixmap::fromImage(image.scaled(wanted, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    pixmap.setDevicePixelRatio(pixelRatio);
    return pixmap;
}
