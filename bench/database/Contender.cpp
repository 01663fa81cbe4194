#include "Contender.h"

#include <exception>
#include <stdexcept>
#include <thread>

namespace Bench
{
namespace
{
void Guarded(const std::function<void()>& work, std::exception_ptr& failure)
{
    try
    {
        work();
    }
    catch (...)
    {
        failure = std::current_exception();
    }
}
} // namespace

void OnTwoThreads(const std::function<void()>& first, const std::function<void()>& second)
{
    std::array<std::exception_ptr, 2> failures;
    std::thread other(Guarded, std::cref(second), std::ref(failures[1]));
    Guarded(first, failures[0]);
    other.join();
    for (const std::exception_ptr& failure : failures)
    {
        if (failure != nullptr)
            std::rethrow_exception(failure);
    }
}

void Contender::ScanOnTwoThreads(const std::string& file, std::size_t rows, std::span<Digest, 2> digests)
{
    OnTwoThreads([&] { ScanByIndex(file, rows, digests[0]); }, [&] { ScanByIndex(file, rows, digests[1]); });
}

void Contender::OpenOneRow(const std::string& /*file*/, std::size_t /*count*/, Digest& /*digest*/)
{
    throw std::logic_error("this contender was not made for this work");
}
} // namespace Bench
