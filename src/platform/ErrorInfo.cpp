#include "platform/ErrorInfo.h"

#include <map>

namespace Brevora {
namespace ErrorCode {
namespace {

/// The messages are fixed, with their misspellings and a blank at the end, because users search logs for
/// them.
// clazy:excludeall=non-pod-global-static
const std::map<int, std::string> MESSAGES{
    {CommonStatus::ACTION_SUCCESS, "Action success"},
    {CommonStatus::ACTION_FAILED, "Action failed"},
    {CommonStatus::POINTER_IS_NULL, "Null pointer"},
    {CommonStatus::OBJECT_NOT_FOUNT, "Object not found"},
    {CommonStatus::NO_PERMISSIONS, "No permissions"},
    {CommonStatus::ACQUIRE_LOCK_FAILED, "Acquire lock failed"},
    {CommonStatus::NEW_FAILED, "Dynamic allocation the memory failed"},
    {CommonStatus::OBJECT_EXISTS, "Object exists"},
    {CommonStatus::INVALID_INPUT_PARAMETER, "Invalid input parameter"},
    {CommonStatus::EXE_CMD_FAILED, "execute command failed"},
    {CommonStatus::FORMAT_ERROR, "String format error"},
    {CommonStatus::OPERATION_NOT_ALLOWED, "Operation is not allowed"},
    {CommonStatus::EXIT_DECODEORSHOW_PROCESS, "Exit decode or scale process"},
    {CommonStatus::MEMSET_FAILED, "Memset failed"},
    {CommonStatus::MEMCPY_FAILED, "Memcpy failed"},
    {CommonStatus::HW_NOT_SUPPORT, "device not support"},
    {CommonStatus::JSON_PARSE_ERROR, "json parse failed"},
    {CommonStatus::JSON_BUILD_ERROR, "json build failed"},
    {CommonStatus::JSON_GET_ITEM_ERROR, "json get item failed"},
    {CommonStatus::GET_RANDOM_SEEDS_FAILED, "get random seed failed"},
    {FileOperStatus::OPEN_FILE_FAILED, "Open file failed"},
    {FileOperStatus::READ_FILE_FAILED, "Read file failed"},
    {FileOperStatus::INVALID_FILE_PATH, "Invalid file path"},
    {FileOperStatus::INVALID_FILE_NAME, "Invalid file name"},
    {FileOperStatus::FILE_NOT_EXIST, "File not exist"},
    {FileOperStatus::WRITE_FILE_FAILED, "Write file failed"},
    {FileOperStatus::SAVE_FILE_FAILED, "Save file failed"},
    // These three entries have no effect: a map keeps the first entry of a key, here those of FileOperStatus.
    {DirOperStatus::CREATE_DIR_FAILED, "Create dir failed"},
    {DirOperStatus::DIR_NOT_EXIST, "Dir not exist"},
    {DirOperStatus::REMOVE_DIR_FAILED, "Remove dir failed"},
    {AvdecodeStatus::DECODE_FAILED, "Decode failed"},
    {AvdecodeStatus::CROP_FAILED, "Crop frame failed"},
    {AvdecodeStatus::IDR_NOTRANSMISSION, "Transmiss IDR frame failed"},
    {AvdecodeStatus::RESIZE_ERROR, "Scale size error"},
    {BrevoraServerStatus::PROCESS_IS_FIRST_RUNNING, "Server is first runing"},
    {BrevoraServerStatus::PROCESS_HAS_BEEN_RUNNING, "Server has been runing"},
    {WifiManagerStatus::CREATE_AP_FAILED, "Create Ap failed"},
    {WifiManagerStatus::STOP_AP_FAILED, "Stop Ap failed"},
    {WifiManagerStatus::GET_AP_CLIENTS_FAILED, "Set AP list clients failed"},
    {WifiManagerStatus::GET_IW_INTERFACE_FAILED, "Scan iw info interface failed"},
    {WifiManagerStatus::IPTABLES_ADD_FAILED, "Iptables add failed"},
    {WifiManagerStatus::IPTABLES_DELETE_FAILED, "Iptables delete failed"},
    {WifiManagerStatus::GET_5G_CHANNEL_FAILED, "get 5g channel number failed"},
    {WifiManagerStatus::CHECK_COMPATIBILITY_FAILED, "Check wifi compatibility failed"},
    {WifiManagerStatus::CREATE_VIRT_INTERFACE_FAILED, "Create virtual interface failed"},
    {WifiManagerStatus::DEL_VIRT_INTERFACE_FAILED, "Delete virtual interface failed"},
    {WifiManagerStatus::WRITE_UDEV_RULES_FAILED, "Write udev rules failed"},
    {WifiManagerStatus::GET_IF_MAC_FAILED, "Get wifi mac failed"},
    {WifiManagerStatus::GET_IW_INTERFACE_NULL, "no available iw interface"},
    {WifiManagerStatus::HOSTAPD_RELOAD, "hostapd reload config"},
    {WifiManagerStatus::SET_IP_FAILED, "set IP failed"},
    {WifiManagerStatus::WIFI_DISCONNECTED, "wifi is disconnected"},
    {WifiManagerStatus::CREATE_PSK_FAILED, "failed to create psk"},
    {WifiManagerStatus::RUN_HOSTAPD_FAILED, "failed to run hostapd"},
    {WifiManagerStatus::WIFIINFO_INIT_FAILED, "failed to init wifi info"},
    {WifiManagerStatus::IS_WIFI_CLOSED, "wifi is not enabled"},
    {WifiManagerStatus::WIFI_ENV_CHECK_FAILED, "Environment check failed"},
    {WifiManagerStatus::WIFI_NOT_RESPONSE, "wifi is not responsed"},
    {AuthentStatus::INIT_AUTHENHANDLE_FAILED, "Failed to init authenhandle"},
    {AuthentStatus::PORT_DERCYPTION_FAILED, "Failed to dercypt the port"},
    {AuthentStatus::CHARSET_CONVERT_FAILED, "Charset convert failed"},
    {AuthentStatus::TQVP_DECRYPT_FAILED, "TQVP decrypt failed"},
    {AuthentStatus::WRITE_AUTHENT_INFO_FAILED, "Failed to write authent info"},
    {AuthentStatus::GET_AUTHENT_INFO_FAILED, "Failed to get authent info"},
    {AuthentStatus::TQVP_ENCRYPT_FAILED, "TQVP encrypt failed"},
    {AuthentStatus::AUTHENT_SESSION_KEY_FAILED, "Authent session key failed"},
    {TcpErrorCode::TCP_UNCONFIGED, "TCP not config "},
    {TcpErrorCode::TCP_SEND_BEFORE_CONNECT, "TCP send date before connection had been done"},
    {TcpErrorCode::TCP_RECEIVE_BEFORE_CONNECT, "TCP receive date before connection had been done"},
    {TcpErrorCode::TCP_RECEIVE_FAILED, "TCP receive data failed"},
    {TcpErrorCode::TCP_SEND_FAILED, "TCP send data failed"},
    {TcpErrorCode::TCP_BIND_FAILED, "TCP bind failed"},
    {TcpErrorCode::TCP_CREATE_SOC_FAILED, "TCP create socket failed"},
    {TcpErrorCode::TCP_CONNECT_FAILED, "TCP connect server failed"},
    {TcpErrorCode::TCP_CLOSE_SOC_FAILED, "TCP close socket failed"},
    {TcpErrorCode::TCP_NULL_RECEIVE_BUF, "TCP receive null buffer"},
    {TcpErrorCode::TCP_ERROR_ARGS, "TCP invalid args"},
    {TcpErrorCode::TCP_LISTEN_FAILED, "TCP listen failed"},
    {TcpErrorCode::TCP_SETOPT_FAILED, "TCP set socket option failed"},
    {TcpErrorCode::TCP_ANDROID_OFFLINE, "TCP android offline request"},
    {TcpErrorCode::TCP_GET_SOCKNAME_FAILED, "TCP get socket name failed"},
    {TcpErrorCode::TCP_RECEIVE_AGAIN, "TCP receive data again"},
    {TcpErrorCode::TCP_VERSION_UNCOMP, "TCP version not the same"},
    {TcpErrorCode::TCP_SESSION_AUTH_SUCCESS, "TCP session authent successfully"},
    {TcpErrorCode::TCP_TIME_OUT, "TCP heartbeat timeout"},
    {BTErrorCode::BTK_UNCONFIGED, "BLUETOOTH not config"},
    {BTErrorCode::BTK_CREATE_SOC_FAILED, "BLUETOOTH create socket failed"},
    {BTErrorCode::BTK_SETOPT_FAILED, "BLUETOOTH set socket option failed"},
    {BTErrorCode::BTK_BIND_FAILED, "BLUETOOTH bind failed"},
    {BTErrorCode::BTK_LISTEN_FAILED, "BLUETOOTH listen failed"},
    {BTErrorCode::BTK_SETTIME_FAILED, "BLUETOOTH set timeout failed"},
    {BTErrorCode::BTK_ACCEPT_FAILED, "BLUETOOTH accept failed"},
    {BTErrorCode::BTK_SEND_FAILED, "BLUETOOTH send data failed"},
    {BTErrorCode::BTK_CONNECT_FAILED, "BLUETOOTH connect server failed"},
    {BTErrorCode::BTK_CLOSE_SOC_FAILED, "BLUETOOTH close socket failed"},
    {BTErrorCode::BTK_START_FAILED, "BLUETOOTH start failed"},
    {BTErrorCode::BTMGR_GETMAC_FAILED, "BLUETOOTH get mac failed"},
    {BTErrorCode::BTMGR_GETNAME_FAILED, "BLUETOOTH get name failed"},
    {BTErrorCode::BTMGR_SETCONF_FAILED, "BLUETOOTH set config failed"},
    {BTErrorCode::BTK_WAIT_CONNECT, "BLUETOOTH connect is waitting"},
    {BTErrorCode::BTK_EPOLLCTL_FAILED, "BLUETOOTH epoll_ctl failed"},
    {BTErrorCode::BTMGR_SCANCONLIST_FAILED, "BLUETOOTH scan connected list failed"},
    {BTErrorCode::BTMGR_GETCLIENTMAC_FAILED, "BLUETOOTH get client mac failed"},
    {BTErrorCode::BTMGR_DISCONBTDEV_FAILED, "BLUETOOTH disconnect bluetooth device failed"},
    {BTErrorCode::BTMGR_NO_DEVICE, "BLUETOOTH no bluetooth device"},
    {BTErrorCode::BTMGR_NOT_RESPONSE, "BLUETOOTH not response"},
    {OrmiluxStatus::ORMILUX_EVENT_SEND_FAILED, "Ormilux event send failed"},
    {TcpSessionAuthentStatus::GET_AUTHFILE_FAILED, "Failed to get authfile"},
    {TcpSessionAuthentStatus::GET_DEVICEID_FAILED, "Failed to get deviceid"},
    {TcpSessionAuthentStatus::WRITE_AUTHFILE_FAILED, "Failed to write authfile"},
    {TcpSessionAuthentStatus::GET_AUTHFILESIZE_FAILED, "Failed to get authfilesize"},
    {TcpSessionAuthentStatus::DO_AUTHENTHANDSHAKE_FAILED, "Failed to do authenthandshake"},
    {TcpSessionAuthentStatus::INIT_AUTHHANDLE_FAILED, "Failed to init authhandle"},
    {FileShareErrorCode::MEMORY_NOT_ENOUGH_TYPE, "PC memory is not enough"},
    {FileShareErrorCode::CLIENT_MEMORY_NOT_ENOUGH_TYPE, "Peer memory is not enough"},
    {FileShareErrorCode::FILE_CHECK_FAIL_TYPE, "File check failed"},
    {FileShareErrorCode::FILE_CHECK_FAIL_CLIENT_TYPE, "Peer file check failed"},
    {FileShareErrorCode::FILE_TRANSFERING_TYPE, "File is transferring"},
    {FileShareErrorCode::FILE_TRANSFER_FAIL_TYPE, "File transfer failed"},
    {FileShareErrorCode::FILE_OVERSIZE_TYPE, "File oversize"},
    {FileShareErrorCode::DIRPATH_NOT_SUPPORT, "Folder is not support to transfer"},
    {FileShareErrorCode::NULLFILE_NOT_SUPPORT, "Null file is not support to transfer"},
    {FileShareErrorCode::CLIENT_FILE_ERROR, "Peer file is abnormal"},
    {FileShareErrorCode::TIME_OUT, "Time out when transfer"},
    {FileShareErrorCode::FILE_NOT_PERMISSION, "File don't have read permission"},
    {FileShareErrorCode::FILE_CMD_SOCKET_ERR, "Command socket error"},
    {FileShareErrorCode::CLIENT_NEED_PERMISSION, "Peer need file permission to operate"},
};

} // namespace

ErrorInfo& ErrorInfo::Instance()
{
    static ErrorInfo instance;
    return instance;
}

std::string ErrorInfo::GetErrorCodeInfo(int code)
{
    const auto found = MESSAGES.find(code);
    return found == MESSAGES.end() ? "Unknown error" : found->second;
}

} // namespace ErrorCode
} // namespace Brevora
