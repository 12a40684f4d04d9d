// Each getter returns the last stored value, or its failure value while the file cannot be read.

#include <QFile>
#include <sys/stat.h>

#include "callsequences/CallSequence.h"
#include "config/Configure.h"
#include "config/Constant.h"
#include "support/Files.h"

namespace {
class ConfigureCalls : public CallSequence
{
public:
    explicit ConfigureCalls(quint32 seed) : CallSequence(seed) {}

    void Step() override;

private:
    struct Model
    {
        std::string name;
        std::string folder;
        bool accepted = false;
        unsigned int trusted = 0;
    };

    void ReplaceFile();
    void Set();
    void Compare();
    std::string AnyText()
    {
        static const QList<QByteArray> TEXTS{"PC", "\xe6\x88\x91", "/a b/c", "x=y", "#", " "};
        return Any(TEXTS).toStdString();
    }

    QString path{QString::fromStdString(
        Constant<Velodesk::StrConstName, std::string>::GetConstant(Velodesk::CONF_FILE))};
    Configure configure;
    bool readable = true;
    Model model;
};

void ConfigureCalls::ReplaceFile()
{
    model = Model();
    switch (Pick(4)) {
    case 0:
        QFile::remove(path);
        readable = false;
        break;
    case 1:
        WriteAll(path, "\n");
        readable = false;
        break;
    case 2:
        WriteAll(path, "[VelodeskServer]\ntrustNum=3\nstatement=true\n");
        readable = true;
        model.trusted = 3;
        model.accepted = true;
        break;
    default:
        WriteAll(path, "[VelodeskServer]\ntrustNum=-3\n[Tandra]\ndevicename=;none\n");
        readable = true;
        break;
    }
}

void ConfigureCalls::Set()
{
    const std::string text = OneIn(5) ? std::string() : AnyText();
    switch (Pick(4)) {
    case 0:
        configure.SetPCDeviceName(text);
        model.name = readable && !text.empty() ? text : model.name;
        break;
    case 1:
        configure.SetSavePath(text);
        model.folder = readable && !text.empty() ? text : model.folder;
        break;
    case 2:
        configure.SetStatementReadFlag();
        model.accepted = model.accepted || readable;
        break;
    default:
        configure.ClearTrustDevices();
        model.trusted = readable ? 0 : model.trusted;
        break;
    }
}

void ConfigureCalls::Compare()
{
    REQUIRE(configure.GetPCDeviceName() == model.name);
    REQUIRE(configure.GetSavePath() == model.folder);
    REQUIRE(configure.IsStatementRead() == model.accepted);
    REQUIRE(configure.GetTrustDeviceNum() == model.trusted);
}

void ConfigureCalls::Step()
{
    switch (Pick(6)) {
    case 0:
        ReplaceFile();
        break;
    case 1: {
        // Init() creates a missing file, and does not change an unreadable one.
        const bool isMissing = !QFile::exists(path);
        configure.Init();
        readable = readable || isMissing;
        REQUIRE(ModeOf(path) == 0600U);
        break;
    }
    default:
        Set();
        break;
    }
    Compare();
}
} // namespace

std::unique_ptr<CallSequence> MakeConfigureCalls(quint32 seed)
{
    return std::make_unique<ConfigureCalls>(seed);
}
