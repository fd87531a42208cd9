// Asks KDE for previews as its file manager does: kde_previews FOLDER PIXELS FILE... writes each one to
// FOLDER/<name of the file>.png, and prints the names of the files of which there are none.
#include <KFileItem>
#include <KIO/PreviewJob>
#include <QApplication>
#include <QDir>
#include <QImage>
#include <QPixmap>
#include <cstdio>

int main(int argumentCount, char** arguments) {
    QApplication application(argumentCount, arguments);
    const QStringList words = application.arguments();
    if (words.size() < 4) return 2;
    KFileItemList files;
    for (const QString& file : words.mid(3)) files.append(KFileItem(QUrl::fromLocalFile(file)));
    const QStringList plugins{QStringLiteral("velamothumbnail")};
    const int pixels = words[2].toInt();
    KIO::PreviewJob* const job = KIO::filePreview(files, QSize(pixels, pixels), &plugins);
    const QDir folder(words[1]);
    QObject::connect(job, &KIO::PreviewJob::gotPreview, [&](const KFileItem& file, const QPixmap& preview) {
        preview.toImage().convertToFormat(QImage::Format_RGBA8888).save(folder.filePath(file.name() + ".png"), "PNG");
    });
    QObject::connect(job, &KIO::PreviewJob::failed, [](const KFileItem& file) { std::puts(qPrintable(file.name())); });
    QObject::connect(job, &KJob::result, &application, &QCoreApplication::quit);
    return QApplication::exec();
}
