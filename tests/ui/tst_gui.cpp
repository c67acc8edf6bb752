#include "UiHarness.h"
#include "localization/LocalizationManager.h"

#include <QAccessible>
#include <QApplication>
#include <QDesktopServices>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QSignalSpy>
#include <QTest>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(KestrunePlugin)

using namespace kestrune;
using namespace kestrune::testing;

namespace {

QString textOf(QQuickItem *item)
{
    return item ? item->property("text").toString() : QStringLiteral("<missing>");
}

QPoint centreOf(QQuickItem *item)
{
    return item->mapToScene(QPointF(item->width() / 2, item->height() / 2)).toPoint();
}

QRectF sceneRect(QQuickItem *item)
{
    return item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
}

// The visible items below `root` that pass `name` or the class name, popups included.
void collect(QQuickItem *root, const char *name, QList<QQuickItem *> &found)
{
    if (!root->isVisible())
        return;
    if (root->objectName() == QLatin1StringView(name) || qstrcmp(root->metaObject()->className(), name) == 0)
        found.append(root);
    for (QQuickItem *child : root->childItems())
        collect(child, name, found);
}

// The items below `item` drawn past the right edge of `area`, text counted as far as it is painted.
void findOverflow(QQuickItem *item, QQuickItem *area, QStringList &found)
{
    if (!item->isVisible())
        return;
    const bool isText = qstrcmp(item->metaObject()->className(), "QQuickText") == 0;
    const qreal extent = isText ? std::max(item->width(), item->property("contentWidth").toReal()) : item->width();
    if (item->mapToItem(area, QPointF(extent, 0)).x() > area->width() + 0.5)
        found.append(QStringLiteral("%1 '%2'").arg(item->metaObject()->className(), textOf(item)));
    for (QQuickItem *child : item->childItems())
        findOverflow(child, area, found);
}

// Stands in for the desktop's folder opener.
class FolderOpener : public QObject {
    Q_OBJECT

public:
    QList<QUrl> opened;

public Q_SLOTS:
    void open(const QUrl &url) { opened.append(url); }
};

} // namespace

// The real window over the real model, headless, on a copy of the demo iPod.
class TestGui : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(QStringLiteral("DelegateModel|QML|qml|Binding loop")));
        LocalizationManager::shared().setLanguage(AppLanguage::english);
        m_ui = std::make_unique<UiHarness>();
        m_ipod = m_ui->addVolume("DEMO", QStringLiteral(KESTRUNE_SOURCE_DIR "/examples/demo-ipod"));
        m_ui->start();
        QTRY_COMPARE(m_ui->model().playlists().size(), 7);
        m_ui->settle();
    }

    void cleanup()
    {
        m_ui.reset();
    }

    void loadingShowsPlaylistsWithBadges()
    {
        QQuickItem *roadTrip = m_ui->item("playlistRow_Road Trip");
        QVERIFY(roadTrip);
        QVERIFY(UiHarness::item(roadTrip, "onRockboxBadge")->isVisible());
        QQuickItem *mostPlayed = m_ui->item("playlistRow_Most Played");
        QVERIFY(mostPlayed);
        QVERIFY(!UiHarness::item(mostPlayed, "onRockboxBadge")->isVisible());
        QVERIFY(!m_ui->item("playlistRow_Demo iPod")); // the master playlist is hidden
        // What the player will not play: one of "Voice & Odds"'s files is missing on the demo iPod.
        QTRY_VERIFY(UiHarness::item(m_ui->item("playlistRow_Voice & Odds"), "warningBadge")->isVisible());
        QCOMPARE(m_ui->item("playlistRow_Voice & Odds")->property("warningText").toString(),
                 "1 track file(s) are missing on the iPod; the player skips them.");
        QVERIFY(!UiHarness::item(roadTrip, "warningBadge")->isVisible());
        m_ui->click(m_ui->item("deviceMenuButton"));
        m_ui->settle(300);
        QCOMPARE(textOf(m_ui->item("deviceRockboxItem")), "Rockbox ipodvideo · up to 2000 tracks per playlist");
        QCOMPARE(textOf(m_ui->item("convertButtonLabel")), "Convert to Rockbox");
        QVERIFY(m_ui->item("fileRow_road trip.m3u8"));
    }

    void languageSwitchesTextsAndFormats_data()
    {
        QTest::addColumn<QString>("header");
        QTest::addColumn<QString>("details");
        QTest::newRow("it") << "Playlist su iPod (Rockbox)" << "1,54 kB  •  05/03/24, 14:07";
        QTest::newRow("en") << "Playlists on iPod (Rockbox)" << "1.54 kB  •  3/5/24, 2:07 PM";
    }

    void languageSwitchesTextsAndFormats()
    {
        QFile file(m_ipod + "/Playlists/road trip.m3u8");
        QVERIFY(file.resize(1536) && file.open(QIODevice::ReadWrite) &&
                file.setFileTime(QDateTime(QDate(2024, 3, 5), QTime(14, 7)), QFileDevice::FileModificationTime));
        file.close();
        m_ui->model().refreshRockboxFilesystem();
        m_ui->click(m_ui->item("languageMenuButton"));
        m_ui->settle(300);
        m_ui->click(m_ui->item("languageItem_" + QString::fromLatin1(QTest::currentDataTag())));
        m_ui->settle();
        QTEST(textOf(m_ui->item("rockboxHeaderLabel")), "header");
        QTEST(textOf(UiHarness::item(m_ui->item("fileRow_road trip.m3u8"), "fileDetails")), "details");
    }

    void alertShowsExactlyWhileThereIsAMessage_data()
    {
        QTest::addColumn<QString>("how");
        for (const char *how : {"OK", "Escape", "Return", "cleared by a device change"})
            QTest::newRow(how) << how;
    }

    void alertShowsExactlyWhileThereIsAMessage()
    {
        QFETCH(QString, how);
        QObject *alert = m_ui->object("alertDialog");
        m_ui->model().setErrorMessage(QStringLiteral("Seleziona almeno una playlist da convertire."));
        m_ui->settle(300);
        QVERIFY(alert->property("visible").toBool());
        QCOMPARE(textOf(m_ui->item("alertMessage")), "Seleziona almeno una playlist da convertire.");
        // Opaque: the playlists beneath giving way to the empty state does not show through.
        const QRect area = sceneRect(m_ui->item("alertBackground")).toAlignedRect().adjusted(6, 6, -6, -6);
        const QImage over = m_ui->window()->grabWindow().copy(area);
        m_ui->model().setSearchText(QStringLiteral("zzz"));
        m_ui->settle();
        QVERIFY(m_ui->window()->grabWindow().copy(area) == over);

        if (how == "OK")
            m_ui->click(m_ui->item("alertOkButton"));
        else if (how == "Escape" || how == "Return")
            QTest::keyClick(m_ui->window(), how == "Escape" ? Qt::Key_Escape : Qt::Key_Return);
        else
            m_ui->model().selectDevice(0);
        m_ui->settle(300);
        QVERIFY(!alert->property("visible").toBool());
        QCOMPARE(m_ui->model().errorMessage(), std::nullopt);
    }

    void nothingIsCutOffAtMinimumSize_data()
    {
        QTest::addColumn<AppLanguage>("language");
        QTest::addRow("English") << AppLanguage::english;
        QTest::addRow("Italian") << AppLanguage::italian;
    }

    void nothingIsCutOffAtMinimumSize()
    {
        QFETCH(AppLanguage, language);
        LocalizationManager::shared().setLanguage(language);
        m_ui->window()->resize(920, 580);
        // Every part of the Rockbox pane shown: files, a selection with its Delete, and the banner.
        m_ui->model().convertSelectedPlaylists();
        QTRY_COMPARE(m_ui->model().fileCount(), 7);
        m_ui->model().clickFileRow(0, {});
        m_ui->model().stageSelectedFiles();
        m_ui->settle(300);
        for (const char *card : {"rockboxCard", "itunesCard"}) {
            QStringList overflow;
            QQuickItem *area = UiHarness::item(m_ui->item(card), "paneContent"); // the card less its padding
            findOverflow(area, area, overflow);
            QVERIFY2(overflow.isEmpty(), qPrintable(card + QStringLiteral(": ") + overflow.join(u", ")));
        }
        // Each menu whole with its items aligned, alone: past a tooltip's delay, no tip shows over it.
        for (const QString opener : {"deviceMenuButton", "languageMenuButton", "fileRow_road trip.m3u8"}) {
            QTest::mouseMove(m_ui->window(), centreOf(m_ui->item(opener)));
            QTest::mouseClick(m_ui->window(), opener.startsWith("file") ? Qt::RightButton : Qt::LeftButton, {},
                              centreOf(m_ui->item(opener)));
            m_ui->settle(800);
            QList<QQuickItem *> popups;
            collect(m_ui->window()->contentItem(), "QQuickPopupItem", popups);
            QCOMPARE(popups.size(), 1);
            QList<QQuickItem *> labels;
            collect(popups.first(), "menuItemLabel", labels);
            QStringList overflow;
            for (QQuickItem *label : labels) {
                findOverflow(label, popups.first(), overflow);
                QCOMPARE(sceneRect(label).x(), sceneRect(labels.first()).x());
            }
            QVERIFY2(overflow.isEmpty(), qPrintable(opener + ": " + overflow.join(u", ")));
            if (QQuickItem *destructive = m_ui->item("deleteFromRockboxItem"))
                QCOMPARE(UiHarness::item(destructive, "menuItemLabel")->property("color").value<QColor>(), QColor("#e5383b"));
            QTest::keyClick(m_ui->window(), Qt::Key_Escape);
            m_ui->settle(300);
        }
    }

    void tabReachesEveryControlWithRingAndName()
    {
        QAccessible::setActive(true);
        m_ui->model().clickFileRow(0, {}); // "Delete" shows
        m_ui->settle();
        QStringList reached;
        for (int i = 0; i < 40; ++i) {
            QTest::keyClick(m_ui->window(), Qt::Key_Tab);
            QQuickItem *focused = m_ui->window()->activeFocusItem();
            QString name = focused->objectName(); // a list's current row stands for the list
            for (QQuickItem *list = focused; list; list = list->parentItem())
                name = list->inherits("QQuickListView") ? list->objectName() : name;
            if (reached.contains(name))
                break;
            reached.append(name);
            QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(focused);
            QVERIFY2(accessible && !accessible->text(QAccessible::Name).isEmpty(), qPrintable(reached.last()));
            QList<QQuickItem *> rings;
            collect(m_ui->window()->contentItem(), "focusRing", rings);
            QVERIFY2(rings.size() == 1 && sceneRect(rings.first()).contains(centreOf(focused)), qPrintable(reached.last()));
        }
        QCOMPARE(reached, QStringList({"deviceMenuButton", "exportOptionsButton", "selectAllFilesButton",
                                       "deleteSelectedButton", "fileList", "languageMenuButton", "creditLink",
                                       "coffeeLink", "searchField", "smartOnlyToggle", "selectAllPlaylistsButton",
                                       "playlistList", "convertButton"}));
    }

    void keyboardAloneDoesTheWholeJob()
    {
        QQuickWindow *window = m_ui->window();
        const auto press = [window](std::initializer_list<Qt::Key> keys) {
            for (Qt::Key key : keys)
                QTest::keyClick(window, key);
        };
        m_ui->item("playlistList")->forceActiveFocus(Qt::TabFocusReason);
        press({Qt::Key_Down, Qt::Key_Space}); // untick "Caffè Italiano ☕"
        QCOMPARE(m_ui->model().tickedPlaylistCount(), 5);
        press({Qt::Key_Tab, Qt::Key_Space}); // convert
        QTRY_COMPARE(textOf(m_ui->item("convertButtonLabel")), "Successfully Converted!");
        QTRY_COMPARE(m_ui->model().fileCount(), 6);

        m_ui->item("fileList")->forceActiveFocus(Qt::TabFocusReason);
        press({Qt::Key_Space, Qt::Key_Down, Qt::Key_Space, Qt::Key_Delete}); // select two files and stage them
        m_ui->settle();
        QCOMPARE(textOf(m_ui->item("pendingBannerText")), "2 playlist(s) to delete");
        press({Qt::Key_Backtab}); // the banner's buttons come before the list
        QCOMPARE(textOf(window->activeFocusItem()), "Apply Changes (2)");
        press({Qt::Key_Space}); // asks first, Cancel focused: Return would keep the files
        m_ui->settle(300);
        QCOMPARE(m_ui->model().deleteConfirmation().size(), 2);
        QCOMPARE(textOf(window->activeFocusItem()), "Cancel");
        press({Qt::Key_Tab, Qt::Key_Space});
        QTRY_COMPARE(m_ui->model().fileCount(), 4);
        // The list kept "road trip.m3u8" current while the new files came in above it.
        QVERIFY(!QFileInfo::exists(m_ipod + "/Playlists/Road Trip.m3u8"));
        QVERIFY(QFileInfo::exists(m_ipod + "/Playlists/Most Played.m3u8"));
    }

    // The keys of the two lists beyond the arrows, one row per rule.
    void listKeys_data()
    {
        QTest::addColumn<QString>("list");
        QTest::addColumn<QList<QKeyCombination>>("keys");
        QTest::addColumn<int>("current"); // -1: the last row
        QTest::addColumn<int>("ticked");  // playlists ticked afterwards
        QTest::addColumn<int>("selected"); // files selected afterwards, -1: all
        const QKeyCombination shiftDown = Qt::ShiftModifier | Qt::Key_Down;
        QTest::addRow("End, then Home") << "playlistList" << QList<QKeyCombination>{Qt::Key_End, Qt::Key_Home} << 0 << 6 << 0;
        QTest::addRow("End") << "playlistList" << QList<QKeyCombination>{Qt::Key_End} << -1 << 6 << 0;
        QTest::addRow("Page Down") << "playlistList" << QList<QKeyCombination>{Qt::Key_PageDown} << -1 << 6 << 0;
        QTest::addRow("Return ticks one row only") << "playlistList" << QList<QKeyCombination>{Qt::Key_Down, Qt::Key_Return} << 1 << 5 << 0;
        QTest::addRow("Shift+Down extends") << "fileList" << QList<QKeyCombination>{Qt::Key_Home, shiftDown, shiftDown} << 2 << 6 << 3;
        QTest::addRow("Ctrl+A selects all") << "fileList" << QList<QKeyCombination>{Qt::Key_Home, Qt::ControlModifier | Qt::Key_A} << 0 << 6 << -1;
    }

    void listKeys()
    {
        QFETCH(QString, list);
        QFETCH(QList<QKeyCombination>, keys);
        if (list == "fileList") {
            m_ui->model().convertSelectedPlaylists();
            QTRY_VERIFY(m_ui->model().fileCount() > 3);
            m_ui->settle();
        }
        QQuickItem *view = m_ui->item(list);
        view->forceActiveFocus(Qt::TabFocusReason);
        for (const QKeyCombination combination : keys)
            QTest::keyClick(m_ui->window(), combination.key(), combination.keyboardModifiers());
        m_ui->settle();
        const int count = view->property("count").toInt();
        QTEST(view->property("currentIndex").toInt() == count - 1 ? -1 : view->property("currentIndex").toInt(), "current");
        QTEST(m_ui->model().tickedPlaylistCount(), "ticked");
        const int selected = int(m_ui->model().selectedFileItemIds().size());
        QTEST(selected == m_ui->model().fileCount() && selected > 0 ? -1 : selected, "selected");
    }

    // Return presses the focused button, as Space does.
    void returnPressesTheFocusedButton()
    {
        m_ui->item("exportOptionsButton")->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyClick(m_ui->window(), Qt::Key_Return);
        m_ui->settle();
        QVERIFY(m_ui->model().showExportSettings());
    }

    void shortcutsDoTheirJob_data()
    {
        QTest::addColumn<QKeyCombination>("keys");
        QTest::addRow("Ctrl+F focuses the search") << (Qt::ControlModifier | Qt::Key_F);
        QTest::addRow("Ctrl+O asks for a folder") << (Qt::ControlModifier | Qt::Key_O);
        QTest::addRow("F5 rescans") << QKeyCombination(Qt::Key_F5);
        QTest::addRow("Ctrl+Q quits") << (Qt::ControlModifier | Qt::Key_Q);
    }

    void shortcutsDoTheirJob()
    {
        QFETCH(QKeyCombination, keys);
        m_ui->addVolume("SECOND", QStringLiteral(KESTRUNE_SOURCE_DIR "/examples/demo-ipod"));
        QSignalSpy quit(qmlEngine(m_ui->window()), &QQmlEngine::quit);
        m_ui->click(m_ui->item("deviceMenuButton"));
        m_ui->settle(300);
        QVERIFY(m_ui->object("deviceMenu")->property("visible").toBool());
        QTest::keyClick(m_ui->window(), Qt::Key_Escape);
        m_ui->settle(300);
        QTest::keyClick(m_ui->window(), keys.key(), keys.keyboardModifiers());
        m_ui->settle();
        QVERIFY(!m_ui->object("deviceMenu")->property("visible").toBool());
        QCOMPARE(m_ui->window()->activeFocusItem() == m_ui->item("searchField"), keys.key() == Qt::Key_F);
        QCOMPARE(m_ui->folderPicker().requests, keys.key() == Qt::Key_O ? 1 : 0);
        QCOMPARE(m_ui->model().detectedDeviceNames().size(), keys.key() == Qt::Key_F5 ? 2 : 1);
        QCOMPARE(quit.size(), keys.key() == Qt::Key_Q ? 1 : 0);
    }

    void controlsAnswerAtOnce_data()
    {
        QTest::addColumn<QString>("control"); // a button shows hover and press; a tick changes with its click
        for (const char *name : {"deviceMenuButton", "exportOptionsButton", "convertButton", "playlistRow_Voice & Odds/tick",
                                 "fileRow_road trip.m3u8/checkBox"})
            QTest::addRow("%s", name) << name;
    }

    void controlsAnswerAtOnce()
    {
        QFETCH(QString, control);
        const QStringList path = control.split(u'/');
        QQuickItem *target = path.size() == 2 ? UiHarness::item(m_ui->item(path[0]), path[1]) : m_ui->item(control);
        QQuickWindow *window = m_ui->window();
        if (path.size() == 2) {
            const QRect area = sceneRect(target).toAlignedRect();
            const QImage before = window->grabWindow().copy(area);
            m_ui->click(target);
            const QImage atOnce = window->grabWindow().copy(area); // no turn of the event loop between
            m_ui->settle(400);
            QVERIFY(atOnce != before && atOnce == window->grabWindow().copy(area));
            return;
        }
        const QPoint probe = target->mapToScene(QPointF(4, target->height() / 2)).toPoint(); // beside the content
        const auto colour = [this, probe] { m_ui->settle(50); return m_ui->window()->grabWindow().pixel(probe); };
        QTest::mouseMove(window, QPoint(1, 1));
        const QRgb idle = colour();
        QTest::mouseMove(window, centreOf(target));
        const QRgb hovered = colour();
        QTest::mousePress(window, Qt::LeftButton, {}, centreOf(target));
        const QRgb pressed = colour();
        QTest::mouseRelease(window, Qt::LeftButton, {}, centreOf(target));
        QVERIFY(idle != hovered && hovered != pressed && idle != pressed);
    }

    void playCountsAndRatingsGoToRockbox()
    {
        const auto openDialog = [this] {
            m_ui->click(m_ui->item("deviceMenuButton"));
            m_ui->settle(300);
            m_ui->click(m_ui->item("copyStatisticsItem"));
            QTRY_COMPARE(m_ui->model().statisticsCopy().value("state").toString(), "ready");
            m_ui->settle(300);
        };
        openDialog();
        QTest::keyClick(m_ui->window(), Qt::Key_Return); // Cancel is the default: nothing is written
        m_ui->settle(300);
        QVERIFY(m_ui->model().statisticsCopy().isEmpty() && !QFileInfo::exists(m_ipod + "/.rockbox/database_changelog.txt"));
        openDialog();
        const QString message = textOf(m_ui->item("statisticsMessage"));
        QVERIFY2(message.contains("Going to .rockbox/database_changelog.txt: 10. Left out"), qPrintable(message));
        m_ui->click(m_ui->item("statisticsCopyButton"));
        QTRY_COMPARE(m_ui->model().statisticsCopy().value("state").toString(), "done");
        QVERIFY(QFileInfo(m_ipod + "/.rockbox/database_changelog.txt").size() > 0);
        QTest::keyClick(m_ui->window(), Qt::Key_Escape);
        m_ui->settle(300);
        QVERIFY(m_ui->model().statisticsCopy().isEmpty());
    }

    void showInFinderOpensTheFolderOrSaysSo_data()
    {
        QTest::addColumn<bool>("folderOpens");
        QTest::newRow("folder opens") << true;
        QTest::newRow("nothing answers") << false;
    }

    void showInFinderOpensTheFolderOrSaysSo()
    {
        // The harness's revealer asks a bus that is not there: opening the folder is all that is left.
        QFETCH(bool, folderOpens);
        FolderOpener opener;
        if (folderOpens)
            QDesktopServices::setUrlHandler(QStringLiteral("file"), &opener, "open");
        QTest::mouseClick(m_ui->window(), Qt::RightButton, {}, centreOf(m_ui->item("fileRow_road trip.m3u8")));
        m_ui->settle(300);
        m_ui->click(m_ui->item("showInFinderItem"));
        m_ui->settle(300);
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
        QCOMPARE(opener.opened, folderOpens ? QList<QUrl>{QUrl::fromLocalFile(m_ipod + "/Playlists")} : QList<QUrl>());
        QCOMPARE(m_ui->object("alertDialog")->property("visible").toBool(), !folderOpens);
        QCOMPARE(m_ui->model().errorMessage().value_or(QString()).contains("'road trip.m3u8'"), !folderOpens);
    }

private:
    std::unique_ptr<UiHarness> m_ui;
    QString m_ipod;
};

int main(int argc, char *argv[])
{
    prepareHeadlessGui();
    QApplication app(argc, argv);
    TestGui test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_gui.moc"
