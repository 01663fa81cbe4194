// Brings functions from workers to the main thread, where they run in the order of their posting.
//
// The main-thread pump handles one event each hundredth of a second, which is too slow for an event a thumbnail: one
// event brings what has come together by then, for a few milliseconds at most. What has not run when the object goes is
// forgotten.
#pragma once

#include <functional>
#include <memory>

#include <halyon/thread/CHynThreadManager.h>

namespace HynHost
{
class MainPost
{
public:
    // `manager` has its main thread initialised and outlives the object. Throws HostError. [main]
    explicit MainPost(Halyon::CHynThreadManager& manager);
    // Also from within one of the functions. [main]
    ~MainPost();
    MainPost(const MainPost&) = delete;
    MainPost& operator=(const MainPost&) = delete;

    // [any]
    void Post(std::function<void()> function);

private:
    class Box;
    std::shared_ptr<Box> m_box;
    Halyon::CHynThreadManager& m_manager;
    Halyon::CHynAutoPtr<Halyon::IHynEventHandler> m_spHandler;
};
} // namespace HynHost
