#include "ExtraTexts.h"

#include <array>

namespace kestrune::ExtraTexts {

namespace {

struct Text {
    const char *name;
    const char *english;
    const char *italian;
};

const std::array<Text, 9> texts{{
    {"volumeWithoutUtf8",
     "This FAT volume is mounted without UTF-8 names: playlists with accents or symbols in their names would "
     "be stored wrongly. Mount it with the utf8 option.",
     "Questo volume FAT è montato senza nomi UTF-8: le playlist con accenti o simboli nel nome verrebbero "
     "salvate male. Montalo con l'opzione utf8."},
    {"loadingPercent", "%1%", "%1%"},
    {"warningBadge", "Warning", "Attenzione"},
    {"warningOverLimit", "Rockbox on this iPod plays only the first %2 of its %1 tracks.",
     "Rockbox su questo iPod riproduce solo i primi %2 dei suoi %1 brani."},
    {"warningLongPaths", "%1 track path(s) are longer than the player can open (259 bytes); it skips them.",
     "%1 percorsi di brani superano la lunghezza che il lettore può aprire (259 byte): li salta."},
    {"warningMissingFiles", "%1 track file(s) are missing on the iPod; the player skips them.",
     "%1 file di brani mancano sull'iPod: il lettore li salta."},
    {"deviceRockbox", "Rockbox %2 · up to %1 tracks per playlist",
     "Rockbox %2 · fino a %1 brani per playlist"},
    {"deviceRockboxUnknown", "Rockbox target unknown · assuming %1 tracks per playlist",
     "Modello Rockbox sconosciuto · si assumono %1 brani per playlist"},
    {"accessibleTick", "Tick for export", "Seleziona per l'esportazione"},
}};

} // namespace

QStringList names()
{
    QStringList list;
    for (const Text &entry : texts)
        list.append(QString::fromLatin1(entry.name));
    return list;
}

std::optional<QString> text(const QString &name, AppLanguage language)
{
    for (const Text &entry : texts) {
        if (name == QLatin1StringView(entry.name))
            return QString::fromUtf8(language == AppLanguage::italian ? entry.italian : entry.english);
    }
    return std::nullopt;
}

} // namespace kestrune::ExtraTexts
