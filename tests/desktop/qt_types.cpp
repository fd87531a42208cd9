// What Qt takes files for: qt_types FILE... prints the type of each on a line of its own.
#include <QMimeDatabase>
#include <cstdio>

int main(int argumentCount, char** arguments) {
    const QMimeDatabase types;
    for (int i = 1; i < argumentCount; ++i)
        std::puts(qPrintable(types.mimeTypeForFile(QString::fromLocal8Bit(arguments[i])).name()));
    return 0;
}
