#include <cstdio>

#include "config/Constant.h"
#include "platform/Singleton.h"

namespace {
/// Prints a line in the constructor and in the destructor. The second contains a text of the tables, which
/// must still exist.
template <int number>
class Printer
{
public:
    Printer() { std::printf("+%d\n", number); }
    ~Printer() { std::printf("-%d %s\n", number, GetConstant(Velodesk::ENGINE_SECTION).c_str()); }
};
} // namespace

int main()
{
    static const Printer<1> LOCAL;
    Singleton<Printer<2>>::GetInstance();
    SingletonNew<Printer<3>>::GetInstance();
    Singleton<Printer<4>>::GetInstance();
    SingletonNew<Printer<5>>::GetInstance();
    // Printer<2> is now the last created object, so it must be destroyed first, and only once.
    Singleton<Printer<2>>::Destroy();
    Singleton<Printer<2>>::GetInstance();
    return 0;
}
