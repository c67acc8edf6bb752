#include "ExtraTexts.h"

#include <array>

namespace kestrune::ExtraTexts {

namespace {

struct Text {
    const char *name;
    const char *english;
    const char *italian;
};

const std::array<Text, 43> texts{{
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
    {"statisticsMenuItem", "Copy play counts and ratings to Rockbox…",
     "Copia conteggi di ascolto e valutazioni su Rockbox…"},
    {"statisticsTitle", "Play counts and ratings", "Conteggi di ascolto e valutazioni"},
    {"statisticsReading", "Reading the play counts and ratings on the iPod…",
     "Lettura dei conteggi di ascolto e delle valutazioni sull'iPod…"},
    // Counts stand after a colon, so that one track reads as well as many.
    {"statisticsSummary", "Tracks with play counts or ratings: %1, with %2 plays in all.",
     "Brani con conteggi di ascolto o valutazioni: %1, con %2 ascolti in tutto."},
    {"statisticsRated", "Rated: %1.", "Con valutazione: %1."},
    {"statisticsWillWrite",
     "Going to .rockbox/database_changelog.txt: %1. Left out, because the file is not on the iPod or its path "
     "is too long for the player: %2.",
     "Vanno in .rockbox/database_changelog.txt: %1. Restano fuori, perché il file non è sull'iPod o il "
     "percorso è troppo lungo per il lettore: %2."},
    {"statisticsWillWriteAll", "Going to .rockbox/database_changelog.txt: %1, that is all of them.",
     "Vanno in .rockbox/database_changelog.txt: %1, cioè tutti."},
    {"statisticsReplaces",
     "The changelog already on the iPod (Rockbox writes one on \"Export Modifications\") will be replaced.",
     "Il changelog già presente sull'iPod (Rockbox ne scrive uno con \"Export Modifications\") verrà "
     "sostituito."},
    {"statisticsNextStep",
     "Then, on the player: Settings > General Settings > Database > Import Modifications. Rockbox imports it on "
     "its own only right after building or updating its database, with \"Load to RAM\" on, and only while that "
     "database has never recorded a play. Tracks Rockbox has already played or rated keep Rockbox's values.",
     "Poi, sul lettore: Settings > General Settings > Database > Import Modifications. Rockbox lo importa da "
     "solo soltanto subito dopo aver creato o aggiornato il suo database, con \"Load to RAM\" attivo, e solo "
     "finché quel database non ha mai registrato un ascolto. I brani che Rockbox ha già riprodotto o valutato "
     "mantengono i valori di Rockbox."},
    {"statisticsNothing", "The iPod holds no play counts or ratings to copy.",
     "L'iPod non contiene conteggi di ascolto o valutazioni da copiare."},
    {"statisticsNoRockbox", "This iPod has no .rockbox folder: install Rockbox on it first.",
     "Questo iPod non ha la cartella .rockbox: installa prima Rockbox."},
    {"statisticsUnreadable", "The iPod's database could not be read.",
     "Impossibile leggere il database dell'iPod."},
    {"statisticsDone", "Copied. Tracks ready for Rockbox to import: %1.",
     "Copia eseguita. Brani pronti per l'importazione in Rockbox: %1."},
    {"statisticsFailed", "The changelog could not be written: %2", "Impossibile scrivere il changelog: %2"},
    {"statisticsCopy", "Copy", "Copia"},
    {"statisticsCancel", "Cancel", "Annulla"},
    {"mirrorTitle", "Remove playlists deleted in iTunes", "Rimuovi le playlist eliminate in iTunes"},
    {"mirrorDesc",
     "Removes the files Kestrune wrote for playlists deleted, renamed or no longer ticked; never a file it did "
     "not write, one edited since, or an On-The-Go playlist's.",
     "Rimuove i file che Kestrune ha scritto per playlist eliminate, rinominate o non più selezionate; mai un "
     "file che non ha scritto, uno modificato nel frattempo o quello di una playlist On-The-Go."},
    {"cancelRun", "Cancel", "Annulla"},
    {"resultsButton", "Results", "Risultati"},
    {"libraryUnreadable", "This iPod's database could not be read, so no playlists are shown.",
     "Il database di questo iPod non è leggibile, quindi non viene mostrata alcuna playlist."},
    {"libraryCutShort",
     "This library looks incomplete (an interrupted sync?): the database's own sizes say %1 bytes, the file "
     "holds %2. Existing playlist files are kept as they are.",
     "Questa libreria sembra incompleta (una sincronizzazione interrotta?): le dimensioni del database "
     "indicano %1 byte, il file ne contiene %2. I file di playlist esistenti restano come sono."},
    {"libraryDamaged",
     "This library looks incomplete: a list of playlists holds fewer than it declares. Existing playlist "
     "files are kept as they are.",
     "Questa libreria sembra incompleta: un elenco di playlist ne contiene meno di quante ne dichiara. I file "
     "di playlist esistenti restano come sono."},
    {"albumArtTitle", "Album art for Rockbox", "Copertine per Rockbox"},
    {"albumArtDesc", "After the playlists, writes the iPod's covers to .rockbox/albumart, where Rockbox looks them up.",
     "Dopo le playlist, scrive le copertine dell'iPod in .rockbox/albumart, dove Rockbox le cerca."},
    {"mirrorConfirmTitle", "Remove these playlist files?", "Rimuovere questi file di playlist?"},
    {"mirrorConfirmBody",
     "Kestrune wrote these files for playlists that are no longer exported. They will be deleted for good: "
     "the iPod has no trash.",
     "Kestrune ha scritto questi file per playlist che non vengono più esportate. Verranno eliminati "
     "definitivamente: l'iPod non ha un cestino."},
    {"mirrorRemove", "Remove", "Rimuovi"},
    {"replaceConfirmTitle", "Replace files from an incomplete library?", "Sostituire file da una libreria incompleta?"},
    {"replaceConfirmBody",
     "This iPod's database looks cut short, so these playlists may have lost tracks. Their files on the "
     "device would be replaced by the shorter ones.",
     "Il database di questo iPod sembra troncato, quindi queste playlist potrebbero aver perso dei brani. I "
     "loro file sul dispositivo verrebbero sostituiti da quelli più corti."},
    {"replaceConfirm", "Replace", "Sostituisci"},
    {"deleteConfirmTitle", "Delete these files for good?", "Eliminare definitivamente questi file?"},
    {"deleteConfirmBody", "The iPod has no trash: these playlist files will be deleted for good.",
     "L'iPod non ha un cestino: questi file di playlist verranno eliminati definitivamente."},
    {"prefixControlCharacter",
     "The prefix holds the control character %2, which would break every entry: the export cannot start.",
     "Il prefisso contiene il carattere di controllo %2, che spezzerebbe ogni voce: l'esportazione non può "
     "partire."},
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
