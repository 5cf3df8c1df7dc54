#pragma once

#include "platform/Describe.h"

/// The choices of a host that select a server, an edition or a feature variant.
namespace tarvo {

enum class PersistenceMode { online, offline };
template <>
struct EnumCases<PersistenceMode> {
    static constexpr EnumCase<PersistenceMode> cases[] = {{PersistenceMode::online, "online"},
                                                          {PersistenceMode::offline, "offline"}};
};

enum class SearchResultMode { full, partial };
template <>
struct EnumCases<SearchResultMode> {
    static constexpr EnumCase<SearchResultMode> cases[] = {{SearchResultMode::full, "full"},
                                                           {SearchResultMode::partial, "partial"}};
};

enum class ServletPathV4 { crm, lumet };
template <>
struct EnumCases<ServletPathV4> {
    static constexpr EnumCase<ServletPathV4> cases[] = {{ServletPathV4::crm, "crm", "/crm"},
                                                        {ServletPathV4::lumet, "lumet", "/vestra"}};
};

enum class InitDataType { crm, lumet };
template <>
struct EnumCases<InitDataType> {
    static constexpr EnumCase<InitDataType> cases[] = {{InitDataType::crm, "crm", "getappinitdata"},
                                                       {InitDataType::lumet, "lumet", "getlumetappinitdata"}};
};

enum class GetMetadataApiVersion { crm, lumet };
template <>
struct EnumCases<GetMetadataApiVersion> {
    static constexpr EnumCase<GetMetadataApiVersion> cases[] = {{GetMetadataApiVersion::crm, "crm", "v5"},
                                                                {GetMetadataApiVersion::lumet, "lumet", "v4"}};
};

enum class SeModule { crm, lumet };
template <>
struct EnumCases<SeModule> {
    static constexpr EnumCase<SeModule> cases[] = {{SeModule::crm, "crm", "$se_module"},
                                                   {SeModule::lumet, "lumet", "se_module"}};
};

enum class Attachments { crm, lumet };
template <>
struct EnumCases<Attachments> {
    static constexpr EnumCase<Attachments> cases[] = {{Attachments::crm, "crm", "$attachments"},
                                                      {Attachments::lumet, "lumet", "attachments"}};
};

enum class WebBaseURLType { crmV2, lumetV2 };
template <>
struct EnumCases<WebBaseURLType> {
    static constexpr EnumCase<WebBaseURLType> cases[] = {{WebBaseURLType::crmV2, "crmV2"},
                                                         {WebBaseURLType::lumetV2, "lumetV2"}};
};

enum class DependentServerType { accountServer, contactServer, crmServer };
template <>
struct EnumCases<DependentServerType> {
    static constexpr EnumCase<DependentServerType> cases[] = {{DependentServerType::accountServer, "accountServer"},
                                                              {DependentServerType::contactServer, "contactServer"},
                                                              {DependentServerType::crmServer, "crmServer"}};
};

/// The server environments, which differ by their raw values alone. `NetworkConstants` makes a base URL for each.
enum class MProxyServerType {
    type0 = 0,
    type1,
    type2,
    type3,
    type4,
    type5,
    type6,
    type7,
    type8,
    type9,
    type10,
    type11
};
template <>
struct EnumCases<MProxyServerType> {
    static constexpr EnumCase<MProxyServerType> cases[] = {
        {MProxyServerType::type0, "type0"}, {MProxyServerType::type1, "type1"},   {MProxyServerType::type2, "type2"},
        {MProxyServerType::type3, "type3"}, {MProxyServerType::type4, "type4"},   {MProxyServerType::type5, "type5"},
        {MProxyServerType::type6, "type6"}, {MProxyServerType::type7, "type7"},   {MProxyServerType::type8, "type8"},
        {MProxyServerType::type9, "type9"}, {MProxyServerType::type10, "type10"}, {MProxyServerType::type11, "type11"}};
};

enum class NetworkApadapterType { alamofire, brenNetworkManager };
template <>
struct EnumCases<NetworkApadapterType> {
    static constexpr EnumCase<NetworkApadapterType> cases[] = {
        {NetworkApadapterType::alamofire, "alamofire"},
        {NetworkApadapterType::brenNetworkManager, "brenNetworkManager"}};
};

}  // namespace tarvo
