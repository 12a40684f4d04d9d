#include "platform/RandomCode.h"

/// Erases the file that it is given, to be watched from outside.
int main(int argc, char* argv[])
{
    return argc == 2 && Brevora::RandomCode::SafeCoverRemove(argv[1]) == 0 ? 0 : 1;
}
