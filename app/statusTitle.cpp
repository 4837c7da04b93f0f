#include "statusTitle.h"

#include "formatDuration.h"

using namespace Qt::StringLiterals;

QString statusTitle(QuorvelController::Mode mode, qint64 studyRemaining, qint64 breakRemaining)
{
    using Mode = QuorvelController::Mode;
    switch (mode) {
    case Mode::Ready:
        return u"QV Ready"_s;
    case Mode::Locked:
        return u"QV Locked"_s;
    case Mode::Studying:
        return u"QV "_s + formatDuration(studyRemaining);
    case Mode::BreakTime:
        return u"QV Break "_s + formatDuration(breakRemaining);
    }
    Q_UNREACHABLE();
}
