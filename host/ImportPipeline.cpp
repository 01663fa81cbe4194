#include <host/ImportPipeline.h>

#include <algorithm>
#include <utility>

#include <host/Recogniser.h>

using Halyon::CHynWorkerThread;
using Halyon::IHynEventParam;

namespace HynHost
{
namespace
{
constexpr std::uint32_t kReadFile = 0x48496D31; // writer to reader: a job
constexpr std::uint32_t kFileRead = 0x48496D32; // reader to writer: the job and the reader's number
} // namespace

// Looks into the files of the jobs that are posted to it and posts them back.
class ImportPipeline::Reader : public CHynWorkerThread
{
public:
    Reader(std::uint32_t number, ImportPipeline& pipeline)
        : CHynWorkerThread(static_cast<std::int32_t>(Importer::kMostJobs), "reader"), m_number(number),
          m_pipeline(pipeline)
    {
        RequireThread(RegisterHandler(new FunctionHandler(kReadFile, [this](std::uint32_t, IHynEventParam* param)
                                                          { Read(static_cast<Carried<FileJob>&>(*param)); }),
                                      nullptr));
    }
    ~Reader() override { CHynWorkerThread::Stop(); }

private:
    void Read(Carried<FileJob>& job) noexcept
    {
        if (m_pipeline.m_observer.MustStop())
            return; // nobody waits for it any more
        FileFacts& facts = job.value.facts;
        try
        {
            facts = m_recogniser.Recognise(job.value.Path());
            if (m_pipeline.m_settings.makeThumbnail && facts.wasRead && facts.kind && IsPicture(*facts.kind))
                job.value.thumbnail = m_pipeline.m_settings.makeThumbnail(m_recogniser.Bytes());
        }
        catch (const std::exception& error)
        {
            facts.problem = error.what();
        }
        PostSurely(m_pipeline.m_writer, kFileRead, m_number, &job, &m_pipeline);
    }

    const std::uint32_t m_number;
    ImportPipeline& m_pipeline;
    Recogniser m_recogniser;
};

ImportPipeline::ImportPipeline(Catalog& catalog, ImportScope scope, ImportSettings settings,
                               Halyon::CHynThreadManager& manager, CHynWorkerThread& writer, ImportObserver& observer)
    : m_catalog(catalog), m_scope(std::move(scope)), m_settings(std::move(settings)), m_writer(writer),
      m_observer(observer), m_spOnRead(new FunctionHandler(kFileRead, [this](std::uint32_t reader, IHynEventParam* job)
                                                           { OnRead(reader, static_cast<Carried<FileJob>&>(*job)); })),
      m_jobsOut(m_settings.readers)
{
    for (std::uint32_t number = 0; number < m_settings.readers; ++number)
    {
        m_readers.emplace_back(new Reader(number, *this));
        int started = 0;
        RequireThread(m_readers.back()->Start(&manager, &started));
    }
    RequireThread(m_writer.RegisterHandler(m_spOnRead, this));
}

// In this order nothing posts to what is no more.
ImportPipeline::~ImportPipeline()
{
    for (const auto& spReader : m_readers)
        spReader->ClearAllEvents();
    for (const auto& spReader : m_readers)
        spReader->Stop();
    m_writer.UnRegisterHandler(m_spOnRead, this);
}

// Runs a step of the import; what it throws ends the import.
template <class Work>
void ImportPipeline::Step(Work work) noexcept
{
    if (m_isOver)
        return;
    std::exception_ptr failure;
    try
    {
        work();
        if (!m_importer->IsDone())
            return;
    }
    catch (...)
    {
        failure = std::current_exception();
    }
    m_isOver = true;
    m_observer.OnEnded(m_importer == nullptr ? ImportReport() : m_importer->Report(), failure);
}

void ImportPipeline::Begin() noexcept
{
    Step(
        [this]
        {
            m_importer = std::make_unique<Importer>(m_catalog, m_scope, m_settings.links, m_observer,
                                                    [this](const FileJobPtr& spJob) { HandOut(spJob); });
            m_importer->Start();
        });
}

void ImportPipeline::Stop() noexcept
{
    Step([this] { m_importer->StopEarly(); });
}

void ImportPipeline::StoreRest()
{
    if (m_isOver && m_importer != nullptr && !m_importer->IsDone())
        m_importer->StopEarly();
}

// To the reader that has least to do.
void ImportPipeline::HandOut(const FileJobPtr& spJob)
{
    const auto least = std::min_element(m_jobsOut.begin(), m_jobsOut.end());
    ++*least;
    PostSurely(*m_readers[static_cast<std::size_t>(least - m_jobsOut.begin())], kReadFile, 0, spJob);
}

void ImportPipeline::OnRead(std::uint32_t reader, Carried<FileJob>& job) noexcept
{
    --m_jobsOut[reader];
    Step([this, &job] { m_importer->TakeBack(&job); });
}
} // namespace HynHost
