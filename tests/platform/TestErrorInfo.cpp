#include <QSet>
#include <QTest>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "platform/ErrorInfo.h"

using namespace Brevora::ErrorCode;

namespace {
struct Row
{
    const char* name;
    int code;
    int value;
    const char* message;
};

#define ROW(family, name, value, message)                                                                    \
    {                                                                                                        \
#family " " #name, family::name, value, message                                                      \
    }

// The three codes of directories have the messages of the file codes with the same numbers.
const Row ROWS[] = {
    ROW(CommonStatus, ACTION_SUCCESS, 0, "Action success"),
    ROW(CommonStatus, ACTION_FAILED, 1, "Action failed"),
    ROW(CommonStatus, POINTER_IS_NULL, 2, "Null pointer"),
    ROW(CommonStatus, OBJECT_NOT_FOUNT, 3, "Object not found"),
    ROW(CommonStatus, NO_PERMISSIONS, 4, "No permissions"),
    ROW(CommonStatus, ACQUIRE_LOCK_FAILED, 5, "Acquire lock failed"),
    ROW(CommonStatus, NEW_FAILED, 6, "Dynamic allocation the memory failed"),
    ROW(CommonStatus, OBJECT_EXISTS, 7, "Object exists"),
    ROW(CommonStatus, INVALID_INPUT_PARAMETER, 8, "Invalid input parameter"),
    ROW(CommonStatus, EXE_CMD_FAILED, 9, "execute command failed"),
    ROW(CommonStatus, FORMAT_ERROR, 10, "String format error"),
    ROW(CommonStatus, OPERATION_NOT_ALLOWED, 11, "Operation is not allowed"),
    ROW(CommonStatus, EXIT_DECODEORSHOW_PROCESS, 12, "Exit decode or scale process"),
    ROW(CommonStatus, MEMSET_FAILED, 13, "Memset failed"),
    ROW(CommonStatus, MEMCPY_FAILED, 14, "Memcpy failed"),
    ROW(CommonStatus, HW_NOT_SUPPORT, 15, "device not support"),
    ROW(CommonStatus, JSON_PARSE_ERROR, 16, "json parse failed"),
    ROW(CommonStatus, JSON_BUILD_ERROR, 17, "json build failed"),
    ROW(CommonStatus, JSON_GET_ITEM_ERROR, 18, "json get item failed"),
    ROW(CommonStatus, GET_RANDOM_SEEDS_FAILED, 19, "get random seed failed"),
    ROW(FileOperStatus, OPEN_FILE_FAILED, 100, "Open file failed"),
    ROW(FileOperStatus, READ_FILE_FAILED, 101, "Read file failed"),
    ROW(FileOperStatus, INVALID_FILE_PATH, 102, "Invalid file path"),
    ROW(FileOperStatus, INVALID_FILE_NAME, 103, "Invalid file name"),
    ROW(FileOperStatus, FILE_NOT_EXIST, 104, "File not exist"),
    ROW(FileOperStatus, WRITE_FILE_FAILED, 105, "Write file failed"),
    ROW(FileOperStatus, SAVE_FILE_FAILED, 106, "Save file failed"),
    ROW(DirOperStatus, CREATE_DIR_FAILED, 100, "Open file failed"),
    ROW(DirOperStatus, DIR_NOT_EXIST, 101, "Read file failed"),
    ROW(DirOperStatus, REMOVE_DIR_FAILED, 102, "Invalid file path"),
    ROW(AvdecodeStatus, DECODE_FAILED, 200, "Decode failed"),
    ROW(AvdecodeStatus, CROP_FAILED, 201, "Crop frame failed"),
    ROW(AvdecodeStatus, IDR_NOTRANSMISSION, 202, "Transmiss IDR frame failed"),
    ROW(AvdecodeStatus, RESIZE_ERROR, 203, "Scale size error"),
    ROW(BrevoraServerStatus, PROCESS_IS_FIRST_RUNNING, 300, "Server is first runing"),
    ROW(BrevoraServerStatus, PROCESS_HAS_BEEN_RUNNING, 301, "Server has been runing"),
    ROW(OrmiluxStatus, ORMILUX_EVENT_SEND_FAILED, 302, "Ormilux event send failed"),
    ROW(WifiManagerStatus, CREATE_AP_FAILED, 400, "Create Ap failed"),
    ROW(WifiManagerStatus, STOP_AP_FAILED, 401, "Stop Ap failed"),
    ROW(WifiManagerStatus, GET_AP_CLIENTS_FAILED, 402, "Set AP list clients failed"),
    ROW(WifiManagerStatus, GET_IW_INTERFACE_FAILED, 403, "Scan iw info interface failed"),
    ROW(WifiManagerStatus, IPTABLES_ADD_FAILED, 404, "Iptables add failed"),
    ROW(WifiManagerStatus, IPTABLES_DELETE_FAILED, 405, "Iptables delete failed"),
    ROW(WifiManagerStatus, GET_5G_CHANNEL_FAILED, 406, "get 5g channel number failed"),
    ROW(WifiManagerStatus, CHECK_COMPATIBILITY_FAILED, 407, "Check wifi compatibility failed"),
    ROW(WifiManagerStatus, CREATE_VIRT_INTERFACE_FAILED, 408, "Create virtual interface failed"),
    ROW(WifiManagerStatus, DEL_VIRT_INTERFACE_FAILED, 409, "Delete virtual interface failed"),
    ROW(WifiManagerStatus, WRITE_UDEV_RULES_FAILED, 410, "Write udev rules failed"),
    ROW(WifiManagerStatus, GET_IF_MAC_FAILED, 411, "Get wifi mac failed"),
    ROW(WifiManagerStatus, GET_IW_INTERFACE_NULL, 412, "no available iw interface"),
    ROW(WifiManagerStatus, HOSTAPD_RELOAD, 413, "hostapd reload config"),
    ROW(WifiManagerStatus, SET_IP_FAILED, 414, "set IP failed"),
    ROW(WifiManagerStatus, WIFI_DISCONNECTED, 415, "wifi is disconnected"),
    ROW(WifiManagerStatus, CREATE_PSK_FAILED, 416, "failed to create psk"),
    ROW(WifiManagerStatus, RUN_HOSTAPD_FAILED, 417, "failed to run hostapd"),
    ROW(WifiManagerStatus, WIFIINFO_INIT_FAILED, 418, "failed to init wifi info"),
    ROW(WifiManagerStatus, IS_WIFI_CLOSED, 419, "wifi is not enabled"),
    ROW(WifiManagerStatus, WIFI_ENV_CHECK_FAILED, 420, "Environment check failed"),
    ROW(WifiManagerStatus, WIFI_NOT_RESPONSE, 421, "wifi is not responsed"),
    ROW(AuthentStatus, INIT_AUTHENHANDLE_FAILED, 500, "Failed to init authenhandle"),
    ROW(AuthentStatus, PORT_DERCYPTION_FAILED, 501, "Failed to dercypt the port"),
    ROW(AuthentStatus, CHARSET_CONVERT_FAILED, 502, "Charset convert failed"),
    ROW(AuthentStatus, TQVP_DECRYPT_FAILED, 503, "TQVP decrypt failed"),
    ROW(AuthentStatus, WRITE_AUTHENT_INFO_FAILED, 504, "Failed to write authent info"),
    ROW(AuthentStatus, GET_AUTHENT_INFO_FAILED, 505, "Failed to get authent info"),
    ROW(AuthentStatus, TQVP_ENCRYPT_FAILED, 506, "TQVP encrypt failed"),
    ROW(AuthentStatus, AUTHENT_SESSION_KEY_FAILED, 507, "Authent session key failed"),
    ROW(TcpErrorCode, TCP_UNCONFIGED, 602, "TCP not config "),
    ROW(TcpErrorCode, TCP_SEND_BEFORE_CONNECT, 603, "TCP send date before connection had been done"),
    ROW(TcpErrorCode, TCP_RECEIVE_BEFORE_CONNECT, 604, "TCP receive date before connection had been done"),
    ROW(TcpErrorCode, TCP_RECEIVE_FAILED, 605, "TCP receive data failed"),
    ROW(TcpErrorCode, TCP_SEND_FAILED, 606, "TCP send data failed"),
    ROW(TcpErrorCode, TCP_BIND_FAILED, 607, "TCP bind failed"),
    ROW(TcpErrorCode, TCP_CREATE_SOC_FAILED, 608, "TCP create socket failed"),
    ROW(TcpErrorCode, TCP_CONNECT_FAILED, 609, "TCP connect server failed"),
    ROW(TcpErrorCode, TCP_CLOSE_SOC_FAILED, 610, "TCP close socket failed"),
    ROW(TcpErrorCode, TCP_NULL_RECEIVE_BUF, 611, "TCP receive null buffer"),
    ROW(TcpErrorCode, TCP_ERROR_ARGS, 612, "TCP invalid args"),
    ROW(TcpErrorCode, TCP_LISTEN_FAILED, 613, "TCP listen failed"),
    ROW(TcpErrorCode, TCP_SETOPT_FAILED, 614, "TCP set socket option failed"),
    ROW(TcpErrorCode, TCP_ANDROID_OFFLINE, 615, "TCP android offline request"),
    ROW(TcpErrorCode, TCP_GET_SOCKNAME_FAILED, 616, "TCP get socket name failed"),
    ROW(TcpErrorCode, TCP_RECEIVE_AGAIN, 617, "TCP receive data again"),
    ROW(TcpErrorCode, TCP_VERSION_UNCOMP, 618, "TCP version not the same"),
    ROW(TcpErrorCode, TCP_SESSION_AUTH_SUCCESS, 619, "TCP session authent successfully"),
    ROW(TcpErrorCode, TCP_TIME_OUT, 620, "TCP heartbeat timeout"),
    ROW(BTErrorCode, BTK_UNCONFIGED, 700, "BLUETOOTH not config"),
    ROW(BTErrorCode, BTK_CREATE_SOC_FAILED, 701, "BLUETOOTH create socket failed"),
    ROW(BTErrorCode, BTK_SETOPT_FAILED, 702, "BLUETOOTH set socket option failed"),
    ROW(BTErrorCode, BTK_BIND_FAILED, 703, "BLUETOOTH bind failed"),
    ROW(BTErrorCode, BTK_LISTEN_FAILED, 704, "BLUETOOTH listen failed"),
    ROW(BTErrorCode, BTK_SETTIME_FAILED, 705, "BLUETOOTH set timeout failed"),
    ROW(BTErrorCode, BTK_ACCEPT_FAILED, 706, "BLUETOOTH accept failed"),
    ROW(BTErrorCode, BTK_SEND_FAILED, 707, "BLUETOOTH send data failed"),
    ROW(BTErrorCode, BTK_CONNECT_FAILED, 708, "BLUETOOTH connect server failed"),
    ROW(BTErrorCode, BTK_CLOSE_SOC_FAILED, 709, "BLUETOOTH close socket failed"),
    ROW(BTErrorCode, BTK_START_FAILED, 710, "BLUETOOTH start failed"),
    ROW(BTErrorCode, BTMGR_GETMAC_FAILED, 711, "BLUETOOTH get mac failed"),
    ROW(BTErrorCode, BTMGR_GETNAME_FAILED, 712, "BLUETOOTH get name failed"),
    ROW(BTErrorCode, BTMGR_SETCONF_FAILED, 713, "BLUETOOTH set config failed"),
    ROW(BTErrorCode, BTK_WAIT_CONNECT, 714, "BLUETOOTH connect is waitting"),
    ROW(BTErrorCode, BTK_EPOLLCTL_FAILED, 715, "BLUETOOTH epoll_ctl failed"),
    ROW(BTErrorCode, BTMGR_SCANCONLIST_FAILED, 716, "BLUETOOTH scan connected list failed"),
    ROW(BTErrorCode, BTMGR_GETCLIENTMAC_FAILED, 717, "BLUETOOTH get client mac failed"),
    ROW(BTErrorCode, BTMGR_DISCONBTDEV_FAILED, 718, "BLUETOOTH disconnect bluetooth device failed"),
    ROW(BTErrorCode, BTMGR_NO_DEVICE, 719, "BLUETOOTH no bluetooth device"),
    ROW(BTErrorCode, BTMGR_NOT_RESPONSE, 720, "BLUETOOTH not response"),
    ROW(TcpSessionAuthentStatus, GET_AUTHFILE_FAILED, 800, "Failed to get authfile"),
    ROW(TcpSessionAuthentStatus, GET_DEVICEID_FAILED, 801, "Failed to get deviceid"),
    ROW(TcpSessionAuthentStatus, WRITE_AUTHFILE_FAILED, 802, "Failed to write authfile"),
    ROW(TcpSessionAuthentStatus, GET_AUTHFILESIZE_FAILED, 803, "Failed to get authfilesize"),
    ROW(TcpSessionAuthentStatus, DO_AUTHENTHANDSHAKE_FAILED, 804, "Failed to do authenthandshake"),
    ROW(TcpSessionAuthentStatus, INIT_AUTHHANDLE_FAILED, 805, "Failed to init authhandle"),
    ROW(FileShareErrorCode, MEMORY_NOT_ENOUGH_TYPE, 901, "PC memory is not enough"),
    ROW(FileShareErrorCode, CLIENT_MEMORY_NOT_ENOUGH_TYPE, 902, "Peer memory is not enough"),
    ROW(FileShareErrorCode, FILE_CHECK_FAIL_TYPE, 903, "File check failed"),
    ROW(FileShareErrorCode, FILE_CHECK_FAIL_CLIENT_TYPE, 904, "Peer file check failed"),
    ROW(FileShareErrorCode, FILE_TRANSFERING_TYPE, 905, "File is transferring"),
    ROW(FileShareErrorCode, FILE_TRANSFER_FAIL_TYPE, 906, "File transfer failed"),
    ROW(FileShareErrorCode, FILE_OVERSIZE_TYPE, 907, "File oversize"),
    ROW(FileShareErrorCode, DIRPATH_NOT_SUPPORT, 908, "Folder is not support to transfer"),
    ROW(FileShareErrorCode, NULLFILE_NOT_SUPPORT, 909, "Null file is not support to transfer"),
    ROW(FileShareErrorCode, CLIENT_FILE_ERROR, 910, "Peer file is abnormal"),
    ROW(FileShareErrorCode, TIME_OUT, 911, "Time out when transfer"),
    ROW(FileShareErrorCode, FILE_NOT_PERMISSION, 912, "File don't have read permission"),
    ROW(FileShareErrorCode, FILE_CMD_SOCKET_ERR, 913, "Command socket error"),
    ROW(FileShareErrorCode, CLIENT_NEED_PERMISSION, 914, "Peer need file permission to operate"),
};

constexpr int ROW_COUNT = 127;

std::string MessageOf(int code)
{
    return ErrorInfo::Instance().GetErrorCodeInfo(code);
}
} // namespace

class TestErrorInfo : public QObject
{
    Q_OBJECT

private slots:
    void everyCodeHasItsValueAndMessage_data();
    void everyCodeHasItsValueAndMessage();
    void everyCodeIsA32BitInteger();
    void everyOtherNumberIsUnknown();
    void extremeNumbersAreUnknown_data();
    void extremeNumbersAreUnknown();
    void instanceIsTheSameEachTime();
    void threadsCanReadConcurrently();
};

void TestErrorInfo::everyCodeHasItsValueAndMessage_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("value");
    QTest::addColumn<QByteArray>("message");
    for (const Row& row : ROWS) {
        QTest::newRow(row.name) << row.code << row.value << QByteArray(row.message);
    }
}

void TestErrorInfo::everyCodeHasItsValueAndMessage()
{
    QFETCH(int, code);
    QTEST(code, "value");
    QTEST(QByteArray::fromStdString(MessageOf(code)), "message");
}

void TestErrorInfo::everyCodeIsA32BitInteger()
{
    static_assert(std::is_same_v<decltype(CommonStatus::ACTION_SUCCESS), const int32_t>);
    static_assert(std::is_same_v<decltype(FileShareErrorCode::CLIENT_NEED_PERMISSION), const int32_t>);
    QCOMPARE(static_cast<int>(std::size(ROWS)), ROW_COUNT);
}

void TestErrorInfo::everyOtherNumberIsUnknown()
{
    QSet<int> known;
    for (const Row& row : ROWS) {
        known.insert(row.value);
    }
    // Two groups of codes share three numbers.
    QCOMPARE(known.size(), ROW_COUNT - 3);
    for (int code = -1000; code <= 2000; ++code) {
        QVERIFY2((MessageOf(code) != "Unknown error") == known.contains(code),
                 qPrintable(QString::number(code)));
    }
}

void TestErrorInfo::extremeNumbersAreUnknown_data()
{
    QTest::addColumn<int>("code");
    for (const int code : {-1, 20, 107, 600, 601, 900, 915, std::numeric_limits<int>::min(),
                           std::numeric_limits<int>::max()}) {
        QTest::newRow(qPrintable(QString::number(code))) << code;
    }
}

void TestErrorInfo::extremeNumbersAreUnknown()
{
    QFETCH(int, code);
    QCOMPARE(MessageOf(code), std::string("Unknown error"));
}

void TestErrorInfo::instanceIsTheSameEachTime()
{
    QCOMPARE(&ErrorInfo::Instance(), &ErrorInfo::Instance());
    QVERIFY(std::is_empty_v<ErrorInfo>);
}

void TestErrorInfo::threadsCanReadConcurrently()
{
    constexpr int THREADS = 4;
    std::vector<int> right(THREADS, 0);
    std::vector<std::thread> threads;
    for (int& count : right) {
        threads.emplace_back([&count] {
            for (const Row& row : ROWS) {
                count += MessageOf(row.value) == row.message ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QCOMPARE(right, std::vector<int>(THREADS, ROW_COUNT));
}

QTEST_GUILESS_MAIN(TestErrorInfo)
#include "TestErrorInfo.moc"
