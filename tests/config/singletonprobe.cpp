#include <cstdio>

#include "config/Constant.h"
#include "platform/Singleton.h"

namespace {
/// Says when it ends, and that the tables are still there.
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
    // Ended early and made anew: late now, and ended once.
    Singleton<Speaker<2>>::Destroy();
    Singleton<Speaker<2>>::GetInstance();
    return 0;
}
