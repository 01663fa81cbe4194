#include <host/ImportPipeline.h>

#include <algorithm>
#include <utility>

#include <halyon/platform/EventLoop.h>

#include <host/HostError.h>
#include <host/Interrupt.h>
#include <host/Recogniser.h>

using Halyon::CHynAutoPtr;
using Halyon::CHynWorkerThread;
using Halyon::HynSucceeded;
using Halyon::IHynEventParam;
using Halyon::kHynMainThreadID;

namespace HynHost
{
namespace
{
// To the main thread, 0 is the request to quit.
constexpr std::uint32_t kQuit = 0;
constexpr std::uint32_t kProgress = 1; // writer to main: files done
constexpr std::uint32_t kBegin = 2;    // main to writer
constexpr std::uint32_t kStop = 3;     // main to writer: the user interrupts
constexpr std::uint32_t kReadFile = 4; // writer to reader: a job
constexpr std::uint32_t kFileRead = 5; // reader to writer: the job and the reader's number
constexpr std::uint32_t kAllRead = 6;  // writer to itself: behind the last job that came back

constexpr auto kTellEvery = std::chrono::milliseconds(100);
constexpr double kLookForInterruptSeconds = 0.05;

constexpr std::uint32_t kWithoutMemoryMilliseconds = 10;

void Require(Halyon::HynResult result)
{
    if (!HynSucceeded(result))
        throw HostError("cannot start", "a thread", Halyon::HynResultName(result));
}

void Start(CHynWorkerThread& worker, Halyon::IHynThreadManager* manager)
{
    int started = 0;
    Require(worker.Start(manager, &started));
}

// Posts again while there is no memory for it: whoever waits for the event cannot be told in another way.
void Post(CHynWorkerThread& thread, std::uint32_t event, std::uint32_t uParam = 0, IHynEventParam* param = nullptr)
{
    while (thread.PostEvent(event, uParam, 0, param, nullptr) == Halyon::HYN_E_FAIL)
        TovSleep(kWithoutMemoryMilliseconds);
}
} // namespace

// Looks into the files of the jobs that are posted to it and posts them back.
class ImportPipeline::Reader : public CHynWorkerThread
{
public:
    Reader(std::uint32_t number, CHynWorkerThread& writer)
        : CHynWorkerThread(static_cast<std::int32_t>(Importer::kMostJobs), "reader"), m_number(number), m_writer(writer)
    {
        Require(RegisterHandler(new FunctionHandler(kReadFile, [this](std::uint32_t, IHynEventParam* param)
                                                    { Read(static_cast<Carried<FileJob>&>(*param)); }),
                                nullptr));
    }
    ~Reader() override { CHynWorkerThread::Stop(); }

private:
    void Read(Carried<FileJob>& job) noexcept
    {
        FileFacts& facts = job.value.facts;
        try
        {
            facts = m_recogniser.Recognise(job.value.Path());
        }
        catch (const std::exception& error)
        {
            facts.problem = error.what();
        }
        Post(m_writer, kFileRead, m_number, &job);
    }

    std::uint32_t m_number;
    CHynWorkerThread& m_writer;
    Recogniser m_recogniser;
};

// Looks for an interrupt a few times a second while the loop runs, and posts the stop once.
class ImportPipeline::Ticker
{
public:
    explicit Ticker(CHynWorkerThread& writer) : m_writer(writer)
    {
        Halyon::InstallEventLoopTimer(
            Halyon::GetMainEventLoop(), 0.0, kLookForInterruptSeconds,
            [](Halyon::EventLoopTimerRef, void* self) { static_cast<Ticker*>(self)->Look(); }, this, &m_timer);
    }
    ~Ticker() { Halyon::RemoveEventLoopTimer(m_timer); }
    Ticker(const Ticker&) = delete;
    Ticker& operator=(const Ticker&) = delete;

private:
    void Look()
    {
        if (!m_posted && Interrupt::Requested())
            m_posted = HynSucceeded(m_writer.PostEvent(kStop, 0, 0, nullptr, nullptr));
    }

    CHynWorkerThread& m_writer;
    Halyon::EventLoopTimerRef m_timer = nullptr;
    bool m_posted = false;
};

ImportPipeline::ImportPipeline(Catalog& catalog, ImportScope scope, FolderWalk::Links links, unsigned readers,
                               Progress& progress)
    : m_catalog(catalog), m_scope(std::move(scope)), m_links(links), m_progress(progress),
      m_spManager(new Halyon::CHynThreadManager), m_spWriter(new CHynWorkerThread(65535, "writer"))
{
    const auto onWriter = [this](std::uint32_t event, FunctionHandler::Function function)
    {
        Require(m_spWriter->RegisterHandler(new FunctionHandler(event, std::move(function)), nullptr));
    };
    onWriter(kBegin, [this](std::uint32_t, IHynEventParam*) { OnBegin(); });
    onWriter(kFileRead, [this](std::uint32_t reader, IHynEventParam* job)
             { OnRead(reader, static_cast<Carried<FileJob>&>(*job)); });
    onWriter(kStop, [this](std::uint32_t, IHynEventParam*) { OnStop(); });
    onWriter(kAllRead, [this](std::uint32_t, IHynEventParam*) { OnAllRead(); });
    m_jobsOut.resize(readers);
    for (std::uint32_t number = 0; number < readers; ++number)
        m_readers.emplace_back(new Reader(number, *m_spWriter));
}

// In this order nothing posts to a thread that has ended.
ImportPipeline::~ImportPipeline()
{
    for (const CHynAutoPtr<Reader>& spReader : m_readers)
        spReader->Stop();
    m_spWriter->Stop();
    m_spManager->UnRegisterAll();
}

ImportReport ImportPipeline::Run()
{
    CountFiles();
    StartThreads();
    {
        const Ticker ticker(*m_spWriter);
        Post(*m_spWriter, kBegin);
        Halyon::RunApplicationEventLoop();
    }
    for (const CHynAutoPtr<Reader>& spReader : m_readers)
        spReader->Stop();
    m_spWriter->Stop();
    m_progress.Clear();
    if (m_failure != nullptr)
        std::rethrow_exception(m_failure);
    return std::move(m_report);
}

// Only a bar needs the total; the walk for it is short and brings what the real one needs into memory.
void ImportPipeline::CountFiles()
{
    std::uint64_t total = 0;
    if (m_progress.WantsTotal())
    {
        FolderWalk walk(m_scope.folder, m_links, m_scope.passed, [](const std::string&, const std::string&) {});
        while (!Interrupt::Requested() && walk.Next())
            ++total;
    }
    m_progress.Start(total);
}

void ImportPipeline::StartThreads()
{
    Require(m_spManager->InitMainThread(nullptr));
    Require(m_spManager->RegisterHandler(
        new FunctionHandler(kProgress, [this](std::uint32_t done, IHynEventParam*) { m_progress.Update(done); }),
        nullptr));
    Start(*m_spWriter, m_spManager);
    for (const CHynAutoPtr<Reader>& spReader : m_readers)
        Start(*spReader, m_spManager);
}

// Runs a step of the import on the writer; what it throws ends the import.
template <class Work>
void ImportPipeline::OnWriter(Work work) noexcept
{
    if (m_quit)
        return;
    try
    {
        work();
        if (m_importer->IsDone())
        {
            m_report = m_importer->Report();
            Quit();
        }
    }
    catch (...)
    {
        m_failure = std::current_exception();
        Quit();
    }
}

void ImportPipeline::Quit()
{
    m_quit = true;
    m_importer.reset(); // its statements belong to this thread
    m_spManager->PostEvent(kQuit, 0, 0, nullptr, kHynMainThreadID, nullptr);
}

void ImportPipeline::OnBegin()
{
    OnWriter(
        [this]
        {
            m_importer = std::make_unique<Importer>(m_catalog, m_scope, m_links, m_progress,
                                                    [this](const FileJobPtr& spJob) { HandOut(spJob); });
            m_importer->Start();
        });
}

// To the reader that has least to do.
void ImportPipeline::HandOut(const FileJobPtr& spJob)
{
    const auto least = std::min_element(m_jobsOut.begin(), m_jobsOut.end());
    ++*least;
    Post(*m_readers[static_cast<std::size_t>(least - m_jobsOut.begin())], kReadFile, 0, spJob);
}

void ImportPipeline::OnRead(std::uint32_t reader, Carried<FileJob>& job)
{
    --m_jobsOut[reader];
    OnWriter(
        [this, &job]
        {
            m_importer->TakeBack(&job);
            const auto now = std::chrono::steady_clock::now();
            if (now < m_tellAt)
                return;
            m_tellAt = now + kTellEvery;
            m_spManager->PostEvent(kProgress, static_cast<std::uint32_t>(m_importer->Report().done), 0, nullptr,
                                   kHynMainThreadID, nullptr);
        });
}

// The readers finish the files they are at; what they have posted back by then is stored.
void ImportPipeline::OnStop()
{
    for (const CHynAutoPtr<Reader>& spReader : m_readers)
        spReader->Stop();
    Post(*m_spWriter, kAllRead);
}

void ImportPipeline::OnAllRead()
{
    OnWriter([this] { m_importer->StopEarly(); });
}
} // namespace HynHost
