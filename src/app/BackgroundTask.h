#pragma once

#include <QCoreApplication>
#include <QMetaObject>
#include <QPointer>
#include <QThreadPool>

#include <utility>

namespace kestrune {

// Runs `work` on the global thread pool and hands its result to `apply` on the GUI thread, unless `owner`
// is gone by then. The check happens on the GUI thread, where the owner is destroyed, so it cannot race;
// the work itself must only use what it captured.
template <typename Work, typename Apply> void runInBackground(QObject *owner, Work work, Apply apply)
{
    QPointer<QObject> guard(owner);
    QThreadPool::globalInstance()->start([guard, work = std::move(work), apply = std::move(apply)]() mutable {
        auto result = work();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [guard, apply = std::move(apply), result = std::move(result)]() mutable {
                if (guard)
                    apply(std::move(result));
            },
            Qt::QueuedConnection);
    });
}

// Calls `step` on the GUI thread, from any thread, unless `owner` is gone by then.
template <typename Step> void postToGuiThread(const QPointer<QObject> &owner, Step step)
{
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [owner, step = std::move(step)]() mutable {
            if (owner)
                step();
        },
        Qt::QueuedConnection);
}

// Lets the thread pool destroy large values (a whole library) so that freeing them never stalls the GUI
// thread. The caller must hold no other reference that outlives this call.
template <typename... Values> void releaseInBackground(Values &&...values)
{
    QThreadPool::globalInstance()->start(
        [... held = std::forward<Values>(values)]() mutable { (static_cast<void>(std::move(held)), ...); });
}

} // namespace kestrune
