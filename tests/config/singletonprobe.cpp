#include <cstdio>

#include "config/Constant.h"
#include "platform/Singleton.h"

namespace {
/// Prints a line in the destructor, which also verifies that the tables still exist.
template <int number>
class Speaker
{
public:
    Speaker() { std::printf("+%d\n", number); }
    ~Speaker() { std::printf("-%d %s\n", number, GetConstant(Velodesk::ENGINE_SECTION).c_str()); }
};
} // namespace

int main()
{
    static const Speaker<1> LOCAL;
    Singleton<Speaker<2>>::GetInstance();
    SingletonNew<Speaker<3>>::GetInstance();
    Singleton<Speaker<4>>::GetInstance();
    SingletonNew<Speaker<5>>::GetInstance();
    // Destroyed and created again: now it is the last one, and it is destroyed once.
    Singleton<Speaker<2>>::Destroy();
    Singleton<Speaker<2>>::GetInstance();
    return 0;
}
