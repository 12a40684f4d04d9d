#pragma once

#include <string>

namespace Brevora {
namespace ErrorCode {

/// Error codes of the shared code and of the cast engine. Each namespace contains the codes of one subject.
/// FileOperStatus and DirOperStatus share the values 100 to 102.
namespace CommonStatus {
constexpr int ACTION_SUCCESS = 0;
constexpr int ACTION_FAILED = 1;
constexpr int POINTER_IS_NULL = 2;
constexpr int OBJECT_NOT_FOUNT = 3;
constexpr int NO_PERMISSIONS = 4;
constexpr int ACQUIRE_LOCK_FAILED = 5;
constexpr int NEW_FAILED = 6;
constexpr int OBJECT_EXISTS = 7;
constexpr int INVALID_INPUT_PARAMETER = 8;
constexpr int EXE_CMD_FAILED = 9;
constexpr int FORMAT_ERROR = 10;
constexpr int OPERATION_NOT_ALLOWED = 11;
constexpr int EXIT_DECODEORSHOW_PROCESS = 12;
constexpr int MEMSET_FAILED = 13;
constexpr int MEMCPY_FAILED = 14;
constexpr int HW_NOT_SUPPORT = 15;
constexpr int JSON_PARSE_ERROR = 16;
constexpr int JSON_BUILD_ERROR = 17;
constexpr int JSON_GET_ITEM_ERROR = 18;
constexpr int GET_RANDOM_SEEDS_FAILED = 19;
} // namespace CommonStatus

namespace FileOperStatus {
constexpr int OPEN_FILE_FAILED = 100;
constexpr int READ_FILE_FAILED = 101;
constexpr int INVALID_FILE_PATH = 102;
constexpr int INVALID_FILE_NAME = 103;
constexpr int FILE_NOT_EXIST = 104;
constexpr int WRITE_FILE_FAILED = 105;
constexpr int SAVE_FILE_FAILED = 106;
} // namespace FileOperStatus

namespace DirOperStatus {
constexpr int CREATE_DIR_FAILED = 100;
constexpr int DIR_NOT_EXIST = 101;
constexpr int REMOVE_DIR_FAILED = 102;
} // namespace DirOperStatus

namespace AvdecodeStatus {
constexpr int DECODE_FAILED = 200;
constexpr int CROP_FAILED = 201;
constexpr int IDR_NOTRANSMISSION = 202;
constexpr int RESIZE_ERROR = 203;
} // namespace AvdecodeStatus

namespace BrevoraServerStatus {
constexpr int PROCESS_IS_FIRST_RUNNING = 300;
constexpr int PROCESS_HAS_BEEN_RUNNING = 301;
} // namespace BrevoraServerStatus

namespace WifiManagerStatus {
constexpr int CREATE_AP_FAILED = 400;
constexpr int STOP_AP_FAILED = 401;
constexpr int GET_AP_CLIENTS_FAILED = 402;
constexpr int GET_IW_INTERFACE_FAILED = 403;
constexpr int IPTABLES_ADD_FAILED = 404;
constexpr int IPTABLES_DELETE_FAILED = 405;
constexpr int GET_5G_CHANNEL_FAILED = 406;
constexpr int CHECK_COMPATIBILITY_FAILED = 407;
constexpr int CREATE_VIRT_INTERFACE_FAILED = 408;
constexpr int DEL_VIRT_INTERFACE_FAILED = 409;
constexpr int WRITE_UDEV_RULES_FAILED = 410;
constexpr int GET_IF_MAC_FAILED = 411;
constexpr int GET_IW_INTERFACE_NULL = 412;
constexpr int HOSTAPD_RELOAD = 413;
constexpr int SET_IP_FAILED = 414;
constexpr int WIFI_DISCONNECTED = 415;
constexpr int CREATE_PSK_FAILED = 416;
constexpr int RUN_HOSTAPD_FAILED = 417;
constexpr int WIFIINFO_INIT_FAILED = 418;
constexpr int IS_WIFI_CLOSED = 419;
constexpr int WIFI_ENV_CHECK_FAILED = 420;
constexpr int WIFI_NOT_RESPONSE = 421;
} // namespace WifiManagerStatus

namespace AuthentStatus {
constexpr int INIT_AUTHENHANDLE_FAILED = 500;
constexpr int PORT_DERCYPTION_FAILED = 501;
constexpr int CHARSET_CONVERT_FAILED = 502;
constexpr int TQVP_DECRYPT_FAILED = 503;
constexpr int WRITE_AUTHENT_INFO_FAILED = 504;
constexpr int GET_AUTHENT_INFO_FAILED = 505;
constexpr int TQVP_ENCRYPT_FAILED = 506;
constexpr int AUTHENT_SESSION_KEY_FAILED = 507;
} // namespace AuthentStatus

namespace TcpErrorCode {
constexpr int TCP_UNCONFIGED = 602;
constexpr int TCP_SEND_BEFORE_CONNECT = 603;
constexpr int TCP_RECEIVE_BEFORE_CONNECT = 604;
constexpr int TCP_RECEIVE_FAILED = 605;
constexpr int TCP_SEND_FAILED = 606;
constexpr int TCP_BIND_FAILED = 607;
constexpr int TCP_CREATE_SOC_FAILED = 608;
constexpr int TCP_CONNECT_FAILED = 609;
constexpr int TCP_CLOSE_SOC_FAILED = 610;
constexpr int TCP_NULL_RECEIVE_BUF = 611;
constexpr int TCP_ERROR_ARGS = 612;
constexpr int TCP_LISTEN_FAILED = 613;
constexpr int TCP_SETOPT_FAILED = 614;
constexpr int TCP_ANDROID_OFFLINE = 615;
constexpr int TCP_GET_SOCKNAME_FAILED = 616;
constexpr int TCP_RECEIVE_AGAIN = 617;
constexpr int TCP_VERSION_UNCOMP = 618;
constexpr int TCP_SESSION_AUTH_SUCCESS = 619;
constexpr int TCP_TIME_OUT = 620;
} // namespace TcpErrorCode

namespace BTErrorCode {
constexpr int BTK_UNCONFIGED = 700;
constexpr int BTK_CREATE_SOC_FAILED = 701;
constexpr int BTK_SETOPT_FAILED = 702;
constexpr int BTK_BIND_FAILED = 703;
constexpr int BTK_LISTEN_FAILED = 704;
constexpr int BTK_SETTIME_FAILED = 705;
constexpr int BTK_ACCEPT_FAILED = 706;
constexpr int BTK_SEND_FAILED = 707;
constexpr int BTK_CONNECT_FAILED = 708;
constexpr int BTK_CLOSE_SOC_FAILED = 709;
constexpr int BTK_START_FAILED = 710;
constexpr int BTMGR_GETMAC_FAILED = 711;
constexpr int BTMGR_GETNAME_FAILED = 712;
constexpr int BTMGR_SETCONF_FAILED = 713;
constexpr int BTK_WAIT_CONNECT = 714;
constexpr int BTK_EPOLLCTL_FAILED = 715;
constexpr int BTMGR_SCANCONLIST_FAILED = 716;
constexpr int BTMGR_GETCLIENTMAC_FAILED = 717;
constexpr int BTMGR_DISCONBTDEV_FAILED = 718;
constexpr int BTMGR_NO_DEVICE = 719;
constexpr int BTMGR_NOT_RESPONSE = 720;
} // namespace BTErrorCode

namespace OrmiluxStatus {
constexpr int ORMILUX_EVENT_SEND_FAILED = 302;
} // namespace OrmiluxStatus

namespace TcpSessionAuthentStatus {
constexpr int GET_AUTHFILE_FAILED = 800;
constexpr int GET_DEVICEID_FAILED = 801;
constexpr int WRITE_AUTHFILE_FAILED = 802;
constexpr int GET_AUTHFILESIZE_FAILED = 803;
constexpr int DO_AUTHENTHANDSHAKE_FAILED = 804;
constexpr int INIT_AUTHHANDLE_FAILED = 805;
} // namespace TcpSessionAuthentStatus

namespace FileShareErrorCode {
constexpr int MEMORY_NOT_ENOUGH_TYPE = 901;
constexpr int CLIENT_MEMORY_NOT_ENOUGH_TYPE = 902;
constexpr int FILE_CHECK_FAIL_TYPE = 903;
constexpr int FILE_CHECK_FAIL_CLIENT_TYPE = 904;
constexpr int FILE_TRANSFERING_TYPE = 905;
constexpr int FILE_TRANSFER_FAIL_TYPE = 906;
constexpr int FILE_OVERSIZE_TYPE = 907;
constexpr int DIRPATH_NOT_SUPPORT = 908;
constexpr int NULLFILE_NOT_SUPPORT = 909;
constexpr int CLIENT_FILE_ERROR = 910;
constexpr int TIME_OUT = 911;
constexpr int FILE_NOT_PERMISSION = 912;
constexpr int FILE_CMD_SOCKET_ERR = 913;
constexpr int CLIENT_NEED_PERMISSION = 914;
} // namespace FileShareErrorCode

/// Returns the messages of error codes. Any thread may use it after main() has begun.
class ErrorInfo
{
public:
    static ErrorInfo& Instance();

    /// Returns the message of `code`; "Unknown error" for a number that is no error code. For the values 100
    /// to 102 it returns the messages of FileOperStatus.
    std::string GetErrorCodeInfo(int code);
};

} // namespace ErrorCode
} // namespace Brevora
