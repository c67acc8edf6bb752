#pragma once

#include "app/AppViewModel.h"

#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>

#include <memory>

namespace kestrune::testing {

// Remembers how often a folder was asked for and never picks one.
class CountingFolderPicker : public FolderPicker {
public:
    std::optional<QUrl> pickFolder(const FolderPickerRequest & /*request*/) override
    {
        ++requests;
        return std::nullopt;
    }
    int requests = 0;
};

// The real window over a model whose devices are the entries of a temporary folder.
class UiHarness {
public:
    UiHarness();
    ~UiHarness();

    // Copies a folder in as a volume, e.g. the demo iPod, before start().
    QString addVolume(const QString &name, const QString &sourceFolder);
    QString addVolume(const QString &name, const QByteArray &database);
    void start(int width = 1120, int height = 720);

    [[nodiscard]] AppViewModel &model() { return *m_model; }
    [[nodiscard]] CountingFolderPicker &folderPicker() { return *m_folderPicker; }
    [[nodiscard]] QQuickWindow *window() const { return m_window; }
    [[nodiscard]] QString volumesPath() const { return m_dir.filePath(QStringLiteral("Volumes")); }

    // Finds a visible-tree item by objectName, popups included; nullptr when there is none.
    [[nodiscard]] QQuickItem *item(const QString &objectName) const;
    // The same, below a given item.
    [[nodiscard]] static QQuickItem *item(QQuickItem *root, const QString &objectName);
    [[nodiscard]] QObject *object(const QString &objectName) const;
    void click(QQuickItem *target, Qt::KeyboardModifiers modifiers = {});
    // Lets bindings, animations and background work settle.
    void settle(int milliseconds = 100);

private:
    QTemporaryDir m_dir;
    std::shared_ptr<CountingFolderPicker> m_folderPicker = std::make_shared<CountingFolderPicker>();
    std::unique_ptr<AppViewModel> m_model;
    std::unique_ptr<QQmlApplicationEngine> m_engine;
    QQuickWindow *m_window = nullptr;
};

// Offscreen, software-rendered, in the C locale, with a language store apart from the user's. Call before
// the application.
void prepareHeadlessGui();

} // namespace kestrune::testing
