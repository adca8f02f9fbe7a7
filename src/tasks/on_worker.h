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

/// The outcome of work on another thread: its result, or what it threw.
template <class Result>
using WorkEnded = std::shared_ptr<std::variant<
    std::exception_ptr, std::conditional_t<std::is_void_v<Result>, std::monostate, Result>>>;

template <class Result>
QCoro::Task<Result> resultOf(QFuture<WorkEnded<Result>> future)
{
    WorkEnded<Result> const ended = co_await future;
    if (ended->index() == 0)
        std::rethrow_exception(std::get<0>(*ended));
    if constexpr (!std::is_void_v<Result>)
        co_return std::move(std::get<1>(*ended));
}

/// Runs `work` on a worker thread and returns its result on the caller's thread, or throws what it
/// threw. `work` captures values only and never touches the editor's objects.
///
/// `work` must have a name. A closure written into the co_await itself is destroyed twice by the
/// compilers we support (GCC bug 99576), so that does not compile.
template <class Work>
auto onWorker(Work const& work) -> QCoro::Task<std::invoke_result_t<Work>>
{
    using Result = std::invoke_result_t<Work>;
    using Ended = WorkEnded<Result>;

    auto const promise = std::make_shared<QPromise<Ended>>();
    QFuture<Ended> future = promise->future();
    promise->start();
    QThreadPool::globalInstance()->start([promise, work = Work(work)]() mutable {
        auto ended = std::make_shared<typename Ended::element_type>();
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
    return resultOf<Result>(std::move(future));
}

template <class Work>
void onWorker(Work const&& work) = delete;

} // namespace framewright
