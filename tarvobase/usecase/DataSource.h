#pragma once

#include "platform/Describe.h"

namespace tarvo {

/// Where a request wants its answer to come from.
enum class DataSource {
    database = 0,  ///< a local answer only
    network = 1,   ///< the server's answer only
    both = 2,      ///< a local answer, then the server's
    either = 3,    ///< a local answer if there is one, otherwise the server's
    none = 4       ///< no answer at all
};

template <>
struct EnumCases<DataSource> {
    static constexpr EnumCase<DataSource> cases[] = {{DataSource::database, "database"},
                                                     {DataSource::network, "network"},
                                                     {DataSource::both, "both"},
                                                     {DataSource::either, "either"},
                                                     {DataSource::none, "none"}};
};

/// Where an answer has come from.
enum class ResponseSource { database = 0, network = 1 };

template <>
struct EnumCases<ResponseSource> {
    static constexpr EnumCase<ResponseSource> cases[] = {{ResponseSource::database, "database"},
                                                         {ResponseSource::network, "network"}};
};

/// Base of the requests of all use cases over `UsecaseFrame`. A request travels as a shared constant, so a derived
/// request keeps the members that it adds.
class BaseRequest {
public:
    virtual ~BaseRequest() = default;
    virtual DataSource source() const { return DataSource::both; }

    bool isDBDataRequested() const { return source() != DataSource::network; }
    bool isNetworkDataRequested() const { return source() != DataSource::database; }
};

/// Base of the responses of all use cases over `UsecaseFrame`.
class BaseResponse {
public:
    virtual ~BaseResponse() = default;
    virtual ResponseSource source() const { return ResponseSource::database; }
};

}  // namespace tarvo
