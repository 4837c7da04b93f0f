#pragma once

#include <QProcess>

/// An X server of the program's own that is large enough for every picture, on which OpenGL draws with the
/// processor alone. To be made before the application, whose display it becomes; ends with the object.
class PictureDisplay
{
public:
    PictureDisplay();
    ~PictureDisplay();
    Q_DISABLE_COPY_MOVE(PictureDisplay)

    bool works() const { return m_works; }

private:
    QProcess m_server;
    QString m_display;
    bool m_works = false;
};
