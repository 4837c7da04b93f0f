#include "checkedArithmetic.h"

#include <QtGlobal>

qint64 checkedAdd(qint64 left, qint64 right, const char *what)
{
    qint64 sum = 0;
    if (__builtin_add_overflow(left, right, &sum))
        qFatal("%s: %lld + %lld does not fit into 64 bits", what, static_cast<long long>(left),
               static_cast<long long>(right));
    return sum;
}

qint64 checkedSeconds(qint64 minutes, const char *what)
{
    qint64 seconds = 0;
    if (__builtin_mul_overflow(minutes, qint64{60}, &seconds))
        qFatal("%s: %lld minutes in seconds do not fit into 64 bits", what, static_cast<long long>(minutes));
    return seconds;
}
