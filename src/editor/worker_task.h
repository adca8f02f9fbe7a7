#pragma once

#include <QCoro/QCoroFuture>
#include <QCoro/QCoroTask>
#include <QPromise>
#include <QThreadPool>

#include <exception>
#include <memory>
#include <type_traits>
#include <utility>
#include <variant>

namespace framewright {

/// Runs `work` on a worker thread and gives what it returned, back on the caller's thread. What it
/// throws is thrown here. `work` gets values only: nothing of the editor is touched from there.
template <class Work>
QCoro::Task<std::invoke_result_t<Work>> onWorker(Work work)
{
    using Result = std::invoke_result_t<Work>;
    using Held = std::conditional_t<std::is_void_v<Result>, std::monostate, Result>;
    using Ended = std::variant<std::exception_ptr, Held>;

    auto const promise = std::make_shared<QPromise<std::shared_ptr<Ended>>>();
    QFuture<std::shared_ptr<Ended>> future = promise->future();
    promise->start();
    QThreadPool::globalInstance()->start([promise, work = std::move(work)]() mutable {
        auto ended = std::make_shared<Ended>();
        try {
            if constexpr (std::is_void_v<Result>) {
                work();
                ended->template emplace<1>();
            } else {
                ended->template emplace<1>(work());
            }
        } catch (...) {
            ended->template emplace<0>(std::current_exception());
        }
        promise->addResult(std::move(ended));
        promise->finish();
    });

    std::shared_ptr<Ended> const ended = co_await future;
    if (ended->index() == 0)
        std::rethrow_exception(std::get<0>(*ended));
    if constexpr (!std::is_void_v<Result>)
        co_return std::move(std::get<1>(*ended));
}

} // namespace framewright
