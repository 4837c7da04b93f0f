#include "complain.h"

#include <cstdio>

void complain(std::string_view line)
{
    fprintf(stderr, "quorvel-companion-relay: %.*s\n", int(line.size()), line.data());
}
