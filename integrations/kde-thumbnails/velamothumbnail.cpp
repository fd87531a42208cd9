#include <KIO/ThumbnailCreator>
#include <KPluginFactory>
#include <QImage>
#include <algorithm>
#include <filesystem>

#include "integrations/thumbnails/thumbnail_of_file.h"

namespace {

/// A copy, since the bitmap owns its pixels.
QImage imageOf(const velamo::Bitmap& bitmap) {
    const int bytesOfRow = bitmap.width() * static_cast<int>(sizeof(std::uint32_t));
    return QImage(reinterpret_cast<const uchar*>(bitmap.pixels().data()), bitmap.width(), bitmap.height(), bytesOfRow,
                  QImage::Format_ARGB32_Premultiplied)
        .copy();
}

}  // namespace

class VelamoThumbnail : public KIO::ThumbnailCreator {
    Q_OBJECT

public:
    VelamoThumbnail(QObject* parent, const QVariantList& arguments) : KIO::ThumbnailCreator(parent, arguments) {}

    KIO::ThumbnailResult create(const KIO::ThumbnailRequest& request) override {
        const std::filesystem::path file = request.url().toLocalFile().toStdString();
        const QSize size = request.targetSize();
        const auto bitmap = velamo::thumbnailOfFile(file, std::min(size.width(), size.height()));
        return bitmap ? KIO::ThumbnailResult::pass(imageOf(*bitmap)) : KIO::ThumbnailResult::fail();
    }
};

K_PLUGIN_CLASS_WITH_JSON(VelamoThumbnail, "velamothumbnail.json")

#include "velamothumbnail.moc"
