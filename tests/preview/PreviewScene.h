#pragma once

#include "ControllerHarness.h"
#include "DesktopSupport.h"
#include "previewOptions.h"

/// A controller over a desktop of fakes, brought into a state by what is stored and by its own commands, and
/// what the desktop lets the program do.
class PreviewScene
{
public:
    PreviewScene(PreviewState state, PreviewDesktop desktop, AppLanguage language);
    Q_DISABLE_COPY_MOVE(PreviewScene)
    ~PreviewScene();

    QuorvelController &controller() { return *m_harness.controller; }
    DesktopSupport &desktopSupport() { return m_desktopSupport; }

    void seconds(qint64 count) { m_harness.seconds(count); }

    /// Stops the heartbeat, so that what is shown stays as it is.
    void standStill();

private:
    void storeRecords(PreviewState state);
    void enter();
    void play(PreviewState state);
    void study();
    void takeBreak();
    void askCoach();
    void limit(PreviewDesktop desktop);

    AppLanguage m_language;
    ControllerHarness m_harness;
    DesktopSupport m_desktopSupport;
    std::unique_ptr<QObject> m_stillness;
};
