#pragma once

#include "platform/Describe.h"

namespace tarvo {

/// The request's wish for where its answer comes from.
enum class DataSource {
    database = 0,  ///< local answer only
    network = 1,   ///< server answer only
    both = 2,      ///< local answer, then server answer
    either = 3,    ///< local answer if there is one, else server answer
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

/// Where an answer came from.
enum class ResponseSource { database = 0, network = 1 };

template <>
struct EnumCases<ResponseSource> {
    static constexpr EnumCase<ResponseSource> cases[] = {{ResponseSource::database, "database"},
                                                         {ResponseSource::network, "network"}};
};

/// What every request of a frame use case is. A request is handed over as a shared constant, so a derived request
/// keeps what it adds.
class BaseRequest {
public:
    virtual ~BaseRequest() = default;
    virtual DataSource source() const { return DataSource::both; }

    bool isDBDataRequested() const { return source() != DataSource::network; }
    bool isNetworkDataRequested() const { return source() != DataSource::database; }
};

/// What every response of a frame use case is.
class BaseResponse {
public:
    virtual ~BaseResponse() = default;
    virtual ResponseSource source() const { return ResponseSource::database; }
};

}  // namespace tarvo
