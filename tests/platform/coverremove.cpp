#include "platform/RandomCode.h"

/// Erases the given file. The test traces this program.
int main(int argc, char* argv[])
{
    return argc == 2 && Brevora::RandomCode::SafeCoverRemove(argv[1]) == 0 ? 0 : 1;
}
