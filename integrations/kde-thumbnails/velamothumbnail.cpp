#include <KIO/ThumbnailCreator>
#include <KPluginFactory>
#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <algorithm>

namespace {

/// The program that draws, as other file managers run it.
QString thumbnailer() {
    const QString name = QStringLiteral("velamo-thumbnailer");
    const QString found = QStandardPaths::findExecutable(name);
    return found.isEmpty() ? QStringLiteral(VELAMO_PROGRAMS) + QLatin1Char('/') + name : found;
}

/// Nothing when there is no picture. The program bounds its time itself.
QImage pictureOf(const QString& file, int pixels) {
    const QTemporaryDir folder;
    const QString picture = folder.filePath(QStringLiteral("picture.png"));
    QProcess program;
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(thumbnailer(), {file, picture, QString::number(pixels)});
    constexpr int withoutEnd = -1;
    const bool isDrawn = folder.isValid() && program.waitForFinished(withoutEnd) &&
                         program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0;
    return isDrawn ? QImage(picture) : QImage();
}

}  // namespace

/// KDE calls this in a process with threads and with other plug-ins, of which no copy may be made to read in: a program
/// of its own draws.
class VelamoThumbnail : public KIO::ThumbnailCreator {
    Q_OBJECT

public:
    VelamoThumbnail(QObject* parent, const QVariantList& arguments) : KIO::ThumbnailCreator(parent, arguments) {}

    KIO::ThumbnailResult create(const KIO::ThumbnailRequest& request) override {
        const QSize size = request.targetSize();
        const QImage picture = pictureOf(request.url().toLocalFile(), std::min(size.width(), size.height()));
        return picture.isNull() ? KIO::ThumbnailResult::fail() : KIO::ThumbnailResult::pass(picture);
    }
};

K_PLUGIN_CLASS_WITH_JSON(VelamoThumbnail, "velamothumbnail.json")

#include "velamothumbnail.moc"
