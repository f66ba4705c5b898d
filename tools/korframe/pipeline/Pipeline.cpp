#include "pipeline/Pipeline.h"

#include <algorithm>
#include <functional>
#include <future>
#include <memory>
#include <system_error>
#include <utility>

#include "io/Errors.h"
#include "io/OutputFile.h"
#include "pipeline/Chain.h"
#include "pipeline/Matrix.h"
#include "pipeline/Progress.h"
#include "pipeline/Random.h"

namespace korframe {

namespace {

// ---- What the request means ----

const PixelFormat* LastRendered(const std::vector<Step>& steps) {
    return !steps.empty() && steps.back().kind == StepKind::Render ? steps.back().layout : nullptr;
}

// A picture can be made from RGB in any byte order; anything else must be what the output says.
ChainEnd EndOf(const ChainRequest& request, const OutputKind& kind) {
    ChainEnd end;
    end.name = NameOfOutput(request.output);
    end.target = kind.layout;
    if (kind.container == Container::Pictures) {
        const PixelFormat* rendered = LastRendered(request.steps);
        end.target = rendered != nullptr && rendered->IsRgb() ? rendered : &FormatOf(Layout::Bgr24);
    }
    return end;
}

bool WritesRgb(const OutputKind& kind) {
    return kind.container == Container::Pictures || (kind.layout != nullptr && kind.layout->IsRgb());
}

// Refuses a matrix that nothing would use, and a file that would have to serve in both directions.
Matrix CheckedMatrix(const std::string& name, bool fromRgb, bool toRgb) {
    if (name.empty()) {
        return Matrix();
    }
    if (!fromRgb && !toRgb) {
        FailUsage("--matrix " + name + ": no matrix is used because neither input nor output is RGB");
    }
    const Matrix matrix = LoadMatrix(name);
    if (matrix.kind == MatrixKind::Own && fromRgb && toRgb) {
        FailUsage(
            "--matrix " + name +
            ": a matrix file works in one direction, and this converts from RGB to YUV and back; use two runs with "
            "a Y4M file in between");
    }
    return matrix;
}

// Depends on whether RGB is captured, and planes rendered to RGB, anywhere along the path.
Matrix ChooseMatrix(const ChainRequest& request, const StreamInfo& source,
                    const std::vector<std::unique_ptr<FrameSource>>& overlays, const OutputKind& kind) {
    bool fromRgb = source.format->IsRgb();
    for (const auto& overlay : overlays) {
        fromRgb = fromRgb || overlay->Info().format->IsRgb();
    }
    bool toRgb = WritesRgb(kind);
    for (const Step& step : request.steps) {
        if (step.kind == StepKind::Render && step.layout->IsRgb()) {
            toRgb = true;
            fromRgb = fromRgb || &step != &request.steps.back() || !WritesRgb(kind);
        }
    }
    return CheckedMatrix(request.matrix, fromRgb, toRgb);
}

void CheckStandardInput(const ChainRequest& request) {
    const auto isStandard = [](const OverlayRequest& overlay) { return overlay.input.path == "-"; };
    const auto count = std::count_if(request.overlays.begin(), request.overlays.end(), isStandard) +
                       (request.input.path == "-" ? 1 : 0);
    if (count > 1) {
        FailUsage("-: only one of background and overlays can come from standard input");
    }
}

void CheckSeed(const ChainRequest& request) {
    const auto isNoise = [](const Step& step) { return step.level != KOR_VIDEOFRAMEDITHERLEVEL_Off; };
    if (request.seed && std::none_of(request.steps.begin(), request.steps.end(), isNoise)) {
        FailUsage("--seed " + std::to_string(*request.seed) +
                  ": a seed has no effect without noise; add --dither 0, 1 or 2");
    }
}

// ---- Reading ----

// The source and its overlays, frame by frame. A picture under clips lasts as long as the longest of them.
class Feed {
  public:
    Feed(std::unique_ptr<FrameSource> source, std::vector<std::unique_ptr<Overlay>> overlays)
        : source_(std::move(source)), overlays_(std::move(overlays)) {
        const auto isClip = [](const auto& overlay) { return !overlay->Info().picture; };
        const auto clip = std::find_if(overlays_.begin(), overlays_.end(), isClip);
        repeats_ = source_->Info().picture && clip != overlays_.end();
        info_ = source_->Info();
        if (repeats_) {
            info_.picture = false;
            info_.frames = (*clip)->Info().frames;
            info_.tags.rate = (*clip)->Info().tags.rate;
        }
    }

    const StreamInfo& Info() const { return info_; }

    void PlaceOverlays(const std::vector<StreamInfo>& backgrounds) {
        for (std::size_t i = 0; i < overlays_.size(); ++i) {
            overlays_[i]->PlaceOn(backgrounds[i]);
        }
    }

    // Gets what the next frame is made of; false at the end.
    bool Next(Frame& frame, std::string& fields, std::vector<std::shared_ptr<OverlayFrame>>& laid) {
        if (repeats_) {
            if (picture_.Width() == 0) {
                source_->Read(picture_);
            }
            CopyFrame(picture_, frame);
        } else {
            if (!source_->Read(frame)) {
                return false;
            }
            fields = source_->FrameFields();
        }
        const bool moreOverlays = AdvanceOverlays();
        laid.clear();
        for (const auto& overlay : overlays_) {
            laid.push_back(overlay->Current());
        }
        return moreOverlays || !repeats_;
    }

  private:
    // False once all are at their last frames.
    bool AdvanceOverlays() {
        bool more = false;
        for (const auto& overlay : overlays_) {
            more = overlay->Advance() || more;
        }
        return more;
    }

    std::unique_ptr<FrameSource> source_;
    std::vector<std::unique_ptr<Overlay>> overlays_;
    StreamInfo info_;
    bool repeats_ = false;
    Frame picture_;
};

// ---- Processing ----

// A frame in progress. The future comes last, so that it is destroyed first and waits for whatever uses the others.
struct Job {
    explicit Job(Chain made) : chain(std::move(made)) {}

    Chain chain;
    Frame frame;
    std::string fields;
    std::vector<std::shared_ptr<OverlayFrame>> overlays;
    Coded coded;
    std::future<void> done;
};

std::future<void> Launch(bool alone, std::function<void()> work) {
    if (alone) {
        return std::async(std::launch::deferred, std::move(work));
    }
    const BlockSignals blocked;  // inherited by the thread, so that signals go to the main thread, which writes
    try {
        return std::async(std::launch::async, std::move(work));
    } catch (const std::system_error& error) {
        throw Error(ExitStatus::Failure,
                    std::string("--jobs: cannot start a thread (") + error.what() + "); use fewer jobs");
    }
}

// Keeps every job busy; frames come back in the order in which they were read.
class Jobs {
  public:
    Jobs(std::vector<Job> jobs, FrameSink& sink, Progress& progress, std::optional<std::uint64_t> seed)
        : jobs_(std::move(jobs)), sink_(sink), progress_(progress), seed_(seed) {}

    void Run(Feed& feed) {
        try {
            for (;; ++read_) {
                Job& job = JobOf(read_);
                if (read_ - written_ == jobs_.size()) {
                    WriteNext();
                }
                if (!feed.Next(job.frame, job.fields, job.overlays)) {
                    break;
                }
                job.done = Launch(jobs_.size() == 1, [this, &job, number = read_] { Process(job, number); });
            }
        } catch (const BrokenStream& error) {
            WriteRest();
            throw Error(ExitStatus::Failure, error.what() + FinishBroken());
        }
        WriteRest();
        sink_.Finish();
        progress_.Finish(written_);
    }

  private:
    Job& JobOf(std::uint64_t number) { return jobs_[static_cast<std::size_t>(number % jobs_.size())]; }

    // The noise of a frame depends on its number, not on its thread.
    void Process(Job& job, std::uint64_t number) {
        if (seed_) {
            SeedRandom(*seed_, number);
        }
        job.chain.Run(job.frame, job.overlays);
        sink_.Encode(job.frame, job.coded);
    }

    // Keeps the frames before a break and says where they are.
    std::string FinishBroken() {
        if (written_ == 0) {
            return "";
        }
        const std::string place = sink_.FinishPartial();
        const std::string frames = written_ == 1 ? "frame" : std::to_string(written_) + " frames";
        return "; the " + frames + " before it " + (written_ == 1 ? "is" : "are") + " in " +
               (place.empty() ? "the output" : place);
    }

    void WriteNext() {
        Job& job = JobOf(written_);
        job.done.get();
        sink_.Write(job.frame, job.fields, job.coded);
        ++written_;
        progress_.Show(written_);
    }

    void WriteRest() {
        while (written_ < read_) {
            WriteNext();
        }
    }

    std::vector<Job> jobs_;
    FrameSink& sink_;
    Progress& progress_;
    std::optional<std::uint64_t> seed_;
    std::uint64_t read_ = 0;
    std::uint64_t written_ = 0;
};

// The renderers expand limited range, so full range comes out with too much contrast.
void WarnOfFullRange(const StreamInfo& source) {
    SayLine("warning: " + source.name +
            ": is full range (XCOLORRANGE=FULL) but is rendered as limited range; its contrast will be too strong");
}

}  // namespace

void RunChain(const ChainRequest& request) {
    CheckSeed(request);
    CheckStandardInput(request);
    const OutputKind kind = DecideOutput(request.output, request.to, LastRendered(request.steps));
    std::unique_ptr<FrameSource> source = OpenSource(request.input);
    std::vector<std::unique_ptr<FrameSource>> overlaySources;
    for (const OverlayRequest& overlay : request.overlays) {
        overlaySources.push_back(OpenOverlay(overlay));
    }
    const Matrix matrix = ChooseMatrix(request, source->Info(), overlaySources, kind);
    std::vector<std::unique_ptr<Overlay>> overlays;
    for (std::size_t i = 0; i < overlaySources.size(); ++i) {
        overlays.push_back(std::make_unique<Overlay>(request.overlays[i], std::move(overlaySources[i]), matrix));
    }

    Feed feed(std::move(source), std::move(overlays));
    std::vector<Job> jobs;
    for (std::size_t i = 0; i < request.jobs; ++i) {
        jobs.emplace_back(Chain(feed.Info(), request.steps, EndOf(request, kind), matrix));
    }
    const Chain& chain = jobs.front().chain;
    feed.PlaceOverlays(chain.Backgrounds());
    if (chain.RendersFullRange()) {
        WarnOfFullRange(feed.Info());
    }
    const std::unique_ptr<FrameSink> sink = OpenSink(request.output, kind, chain.Info(), request.policy);
    Progress progress(feed.Info());
    Jobs(std::move(jobs), *sink, progress, request.seed).Run(feed);
}

}  // namespace korframe
