#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/DispatchQueue.h"
#include "platform/MainQueue.h"

namespace tarvo {

class AppPlatformConstantsProtocol;

/// Queues and small helpers that many operations share. Any thread may use them.
class CommonUtils {
public:
    using Work = platform::Work;

    /// Runs the work later on a background queue.
    static void performAsyncInBackground(Work work) { nextBackgroundDispatchQueue()->async(std::move(work)); }
    /// Runs the work later on the main queue, also when called from it.
    static void performAsyncInMain(Work work) { MainQueue::shared()->async(std::move(work)); }
    enum class Sync { no, yes };
    /// Runs the work on a queue. With `yes` the work has run when this returns.
    static void performRequestInQueue(const std::shared_ptr<DispatchQueue>& queue, Sync sync, Work work);

    /// Returns a serial queue for a background job. If the platform has a number of threads, there are as many queues
    /// and they take turns. Otherwise each call gets a queue of its own, and jobs run side by side as far as the thread
    /// pool allows.
    static std::shared_ptr<DispatchQueue> nextBackgroundDispatchQueue();
    /// Returns the limits of the platform, which are a desktop's unless a host sets others. A host sets them before the
    /// first background job.
    static std::shared_ptr<AppPlatformConstantsProtocol> platformConstants();
    static void setPlatformConstants(std::shared_ptr<AppPlatformConstantsProtocol> constants);

    enum class BinarySearchOptions {
        firstEqual,     ///< the first of several equal items
        lastEqual,      ///< the last of them
        insertionIndex  ///< where the search ended, with or without an equal item
    };
    /// Returns the index of an element in a list that is sorted by `elementFromItem(item)`, or nullopt for an empty
    /// list.
    template <class List, class Element, class ElementFromItem>
    static std::optional<std::size_t> binarySearch(const List& in, const Element& for_,
                                                   BinarySearchOptions searchOptions,
                                                   ElementFromItem&& elementFromItem) {
        auto isEqual = [&](std::size_t index) { return elementFromItem(in[index]) == for_; };
        std::size_t low = 0, end = in.size(), middle = 0;
        if (end == 0) return std::nullopt;
        while (low < end) {
            middle = (low + end - 1) / 2;
            if (isEqual(middle)) return amongEqual(middle, in.size(), searchOptions, isEqual);
            if (elementFromItem(in[middle]) < for_)
                low = middle + 1;
            else
                end = middle;
        }
        return searchOptions == BinarySearchOptions::insertionIndex ? std::optional(middle) : std::nullopt;
    }

    template <class T, class Call>
    static void compareAndCall(const T& oldValue, const T& newValue, Call&& callIfUnequal) {
        if (!(oldValue == newValue)) callIfUnequal();
    }

    /// Returns the account id of the signed-in user, or an empty text if nobody is signed in.
    static std::string getCurrentUserBrenUID();
    static bool hasBrenuid();

private:
    template <class IsEqual>
    static std::size_t amongEqual(std::size_t index, std::size_t size, BinarySearchOptions options, IsEqual&& isEqual) {
        if (options == BinarySearchOptions::firstEqual)
            while (index > 0 && isEqual(index - 1)) --index;
        if (options == BinarySearchOptions::lastEqual)
            while (index + 1 < size && isEqual(index + 1)) ++index;
        return index;
    }
};

}  // namespace tarvo
