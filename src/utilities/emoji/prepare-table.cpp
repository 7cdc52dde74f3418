// Prepares an emoji table while the program is built; it is never installed.
//
// usage: prepare-emoji-table JSON OUTPUT
#include "utilities/emoji/PreparedEmojiTable.h"

#include <QFile>
#include <QSaveFile>

#include <cstdio>

int main(int argc, char **argv) {
    if (argc != 3)
        return 2;
    QFile json(QFile::decodeName(argv[1]));
    // In place of the old file and never into it: a program that runs has that one mapped, and would end by it.
    QSaveFile output(QFile::decodeName(argv[2]));
    const bool isRead = json.open(QIODevice::ReadOnly);
    const QByteArray bytes = isRead ? tavrine::prepareEmojiTable(json.readAll()) : QByteArray();
    if (bytes.isEmpty() || !output.open(QIODevice::WriteOnly) || output.write(bytes) != bytes.size() ||
        !output.commit()) {
        std::fprintf(stderr, "%s: no table can be made of it\n", argv[1]);
        return 1;
    }
    return 0;
}
