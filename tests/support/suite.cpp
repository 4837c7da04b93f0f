#include "suite.h"

#include <QFileInfo>

#include <cstdio>
#include <map>

using namespace Qt::StringLiterals;

namespace {

std::map<QString, SuiteEntry::Run> &entries()
{
    static std::map<QString, SuiteEntry::Run> known;
    return known;
}

} // namespace

SuiteEntry::SuiteEntry(const char *file, Run run)
{
    const auto name = QFileInfo(QString::fromLocal8Bit(file)).completeBaseName();
    if (!entries().emplace(name, run).second)
        qFatal("two tests of the name %s", qPrintable(name));
}

int main(int count, char **words)
{
    const auto entry = entries().find(count > 1 ? QString::fromLocal8Bit(words[1]) : QString());
    if (entry == entries().end()) {
        fprintf(stderr, "usage: %s TEST [what Qt Test takes], where TEST is one of these:\n", words[0]);
        for (const auto &[name, run] : entries())
            fprintf(stderr, "  %s\n", qPrintable(name));
        return 2;
    }
    words[1] = words[0]; // Qt Test sees its own arguments only
    return entry->second(count - 1, words + 1);
}
