#include "pipeline/Pipeline.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
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
ChainEnd EndOf(const ChainRequest& request, const OutputKind& kind, const StreamInfo& source) {
    ChainEnd end;
    end.name = NameOfOutput(request.output);
    end.target = kind.layout;
    if (kind.container == Container::Pictures) {
        const PixelFormat* made = request.steps.empty() ? source.format : LastRendered(request.steps);
        end.target = made != nullptr && made->IsRgb() ? made : &FormatOf(Layout::Bgr24);
    }
    return end;
}

// By the user's word, or by that of the file, or else the default.
Matrix ChooseMatrix(const ChainRequest& request, const StreamInfo& source) {
    const std::string& name = request.matrix.empty() ? MatrixOf(source.tags) : request.matrix;
    return name.empty() ? Matrix() : LoadMatrix(name);
}

// Whether pixels of an output can be transparent.
bool HasAlpha(const OutputKind& kind) {
    return kind.container == Container::Pictures ? kind.picture == PictureKind::Png
                                                 : kind.layout != nullptr && kind.layout->HasAlpha();
}

// Refuses a matrix that nothing uses, and a file that would have to serve in both directions.
void CheckMatrix(const std::string& name, const Matrix& matrix, bool fromRgb, bool toRgb) {
    if (name.empty()) {
        return;
    }
    if (!fromRgb && !toRgb) {
        FailUsage("--matrix " + name + ": no matrix is used because nothing is converted between RGB and YUV");
    }
    if (matrix.kind == MatrixKind::Own && fromRgb && toRgb) {
        FailUsage(
            "--matrix " + name +
            ": a matrix file works in one direction, and this converts from RGB to YUV and back; use two runs with "
            "a Y4M file in between");
    }
}

// From this height on, clips are usually of BT.709.
constexpr std::size_t kHighDefinition = 720;

// What the user may not be aware of.
void SayAssumptions(const ChainRequest& request, const StreamInfo& source, const Chain& chain) {
    const bool oneWay = chain.CapturesRgb() != chain.RendersRgb();  // in both directions any matrix is right
    if (request.matrix.empty() && oneWay && MatrixOf(source.tags).empty() && source.height >= kHighDefinition) {
        SayNote("note: " + source.name +
                ": is converted by BT.601; HD video is usually BT.709, for which there is "
                "--matrix 709");
    }
    if (chain.DependsOnRange() && !IsRangeKnown(source.tags)) {
        SayNote("note: " + source.name +
                ": does not give its range and is taken as limited; if it is full, add "
                "--range full");
    }
    if (request.verbose) {
        SayLine("path: " + chain.Path());
    }
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

// The range of the user's word, which only samples of YUV can have in two ways.
void ApplyRange(const ChainRequest& request, StreamInfo& info) {
    if (!request.fullRange) {
        return;
    }
    if (info.format->IsRgb() || info.format->layout == Layout::Yuv2) {
        FailUsage(std::string("--range: ") + info.name + " is " + info.format->name +
                  ", which has one range only; expected a YUV layout");
    }
    SetRange(info.tags, *request.fullRange);
}

// An edge between chroma samples, or the edge of the picture.
void CheckCropEdge(std::size_t edge, std::size_t side, bool isShared, const StreamInfo& info) {
    if (edge > side) {
        FailUsage("--crop: reaches beyond the " + SizeText(info.width, info.height) + " frames of " + info.name);
    }
    if (isShared && edge % 2 != 0 && edge != side) {
        FailUsage(std::string("--crop: cuts through chroma samples, which ") + info.format->name +
                  " has for two columns or rows; expected even numbers");
    }
}

void ApplyCrop(const CropRequest& crop, StreamInfo& info) {
    if (crop.size.width == 0) {
        return;
    }
    bool sharedColumns = false;
    bool sharedRows = false;
    for (const Component& component : info.format->Components()) {
        sharedColumns = sharedColumns || component.widthShift > 0;
        sharedRows = sharedRows || component.heightShift > 0;
    }
    for (const std::size_t edge : {crop.x, crop.x + crop.size.width}) {
        CheckCropEdge(edge, info.width, sharedColumns, info);
    }
    for (const std::size_t edge : {crop.y, crop.y + crop.size.height}) {
        CheckCropEdge(edge, info.height, sharedRows, info);
    }
    const bool fields = info.tags.interlacing != "p" && info.tags.interlacing != "?";
    if (fields && crop.y % 2 != 0) {
        FailUsage("--crop: an odd row would swap the fields of " + info.name + ", which is interlaced");
    }
    info.width = crop.size.width;
    info.height = crop.size.height;
}

// The source and its overlays, frame by frame. A picture under clips lasts as long as the longest of them.
class Feed {
  public:
    Feed(std::unique_ptr<FrameSource> source, const ChainRequest& request,
         std::vector<std::unique_ptr<Overlay>> overlays)
        : source_(std::move(source)), overlays_(std::move(overlays)), crop_(request.crop), frames_(request.frames) {
        const auto isClip = [](const auto& overlay) { return !overlay->Info().picture; };
        const auto clip = std::find_if(overlays_.begin(), overlays_.end(), isClip);
        repeats_ = source_->Info().picture && clip != overlays_.end();
        info_ = source_->Info();
        ApplyRange(request, info_);
        ApplyCrop(crop_, info_);
        if (repeats_) {
            info_.picture = false;
            info_.frames = (*clip)->Info().frames;
            info_.tags.rate = (*clip)->Info().tags.rate;
        } else if (info_.frames) {
            const std::uint64_t end = std::min(*info_.frames, frames_.last);
            info_.frames = end >= frames_.first ? end - frames_.first + 1 : 0;
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
                ReadCropped(picture_);
            }
            CopyFrame(picture_, frame);
        } else {
            if (!ReadSelected(frame)) {
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
    bool ReadSelected(Frame& frame) {
        while (number_ + 1 < frames_.first && source_->Read(whole_)) {
            ++number_;
        }
        if (number_ == frames_.last) {
            return false;
        }
        if (!ReadCropped(frame)) {
            CheckSelection();
            return false;
        }
        ++number_;
        return true;
    }

    // At the end of the source, which may come too early.
    void CheckSelection() const {
        if (number_ < frames_.first) {
            FailFile(info_.name, "has only " + std::to_string(number_) + " frames; --frames begins with " +
                                     std::to_string(frames_.first));
        }
        if (frames_.last != FrameRange().last) {
            SayNote("warning: " + info_.name + ": ends after frame " + std::to_string(number_) +
                    "; --frames asks for frames up to " + std::to_string(frames_.last));
        }
    }

    bool ReadCropped(Frame& frame) {
        if (crop_.size.width == 0) {
            return source_->Read(frame);
        }
        if (!source_->Read(whole_)) {
            return false;
        }
        CropFrame(whole_, crop_.x, crop_.y, crop_.size.width, crop_.size.height, frame);
        return true;
    }

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
    CropRequest crop_;
    FrameRange frames_;
    std::uint64_t number_ = 0;  // frames of the source that have been read
    bool repeats_ = false;
    Frame picture_;
    Frame whole_;
};

// ---- Processing ----

struct Worker {
    explicit Worker(Chain made) : chain(std::move(made)) {}

    Chain chain;
    std::uint64_t number = 0;  // of the frame, from 0
    Frame frame;
    std::string fields;
    std::vector<std::shared_ptr<OverlayFrame>> overlays;
    Coded coded;
};

// Shares the frames among a fixed set of workers, one a thread. Each reads the next frame, processes it and writes it
// when its turn comes. So reading, processing and writing overlap, the order stays, and there are never more frames in
// memory than workers.
class Workers {
  public:
    Workers(std::vector<Worker> workers, Feed& feed, FrameSink& sink, Progress& progress,
            std::optional<std::uint64_t> seed)
        : workers_(std::move(workers)), feed_(feed), sink_(sink), progress_(progress), seed_(seed) {}

    void Run() {
        std::vector<std::thread> threads = StartAllButOne();
        Work(workers_.front());
        for (std::thread& thread : threads) {
            thread.join();
        }
        if (failure_) {
            std::rethrow_exception(failure_);
        }
        if (broken_) {
            throw Error(ExitStatus::Failure, *broken_ + FinishBroken());
        }
        sink_.Finish();
        progress_.Finish(written_);
    }

  private:
    // Fewer threads than asked for make the same bytes.
    std::vector<std::thread> StartAllButOne() {
        std::vector<std::thread> threads;
        const BlockSignals blocked;  // inherited by the threads, so that signals go to the main thread
        try {
            for (std::size_t i = 1; i < workers_.size(); ++i) {
                threads.emplace_back([this, i] { Work(workers_[i]); });
            }
        } catch (const std::system_error& error) {
            SayNote("warning: --jobs: only " + std::to_string(threads.size() + 1) + " of " +
                    std::to_string(workers_.size()) + " threads could be started (" + error.what() + ")");
        }
        return threads;
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

    void Work(Worker& worker) {
        try {
            while (ReadNext(worker)) {
                // The noise of a frame depends on its number, not on its thread.
                if (seed_) {
                    SeedRandom(*seed_, worker.number);
                }
                Frame& made = worker.chain.Run(worker.frame, worker.overlays);
                sink_.Encode(made, worker.coded);
                WriteInTurn(worker, made);
            }
        } catch (...) {
            Fail(std::current_exception());
        }
    }

    bool ReadNext(Worker& worker) {
        const std::lock_guard<std::mutex> lock(reading_);
        if (ended_ || failed_) {
            return false;
        }
        ended_ = true;  // unless there is a frame
        try {
            if (!feed_.Next(worker.frame, worker.fields, worker.overlays)) {
                return false;
            }
        } catch (const BrokenStream& error) {
            broken_ = error.what();
            return false;
        }
        ended_ = false;
        worker.number = read_++;
        return true;
    }

    void WriteInTurn(Worker& worker, const Frame& made) {
        std::unique_lock<std::mutex> lock(writing_);
        turn_.wait(lock, [&] { return written_ == worker.number || failed_; });
        if (!failed_) {
            sink_.Write(made, worker.fields, worker.coded);
            ++written_;
            progress_.Show(written_);
            turn_.notify_all();
        }
    }

    // The first failure ends the work of all.
    void Fail(std::exception_ptr failure) {
        const std::lock_guard<std::mutex> lock(writing_);
        if (!failed_) {
            failure_ = std::move(failure);
            failed_ = true;
        }
        turn_.notify_all();
    }

    std::vector<Worker> workers_;
    Feed& feed_;
    FrameSink& sink_;
    Progress& progress_;
    std::optional<std::uint64_t> seed_;

    std::mutex reading_;  // for the feed and what follows
    bool ended_ = false;
    std::optional<std::string> broken_;  // how the input breaks off
    std::uint64_t read_ = 0;

    std::mutex writing_;  // for the sink and what follows
    std::condition_variable turn_;
    std::uint64_t written_ = 0;
    std::exception_ptr failure_;
    std::atomic<bool> failed_ = false;
};

// As many as asked for, but not more than there are frames.
std::size_t CountWorkers(std::size_t jobs, const StreamInfo& info) {
    const std::size_t wanted = jobs > 0 ? jobs : std::thread::hardware_concurrency();
    const std::uint64_t most = std::min<std::uint64_t>(kMaxJobs, info.frames.value_or(kMaxJobs));
    return static_cast<std::size_t>(std::clamp<std::uint64_t>(wanted, 1, std::max<std::uint64_t>(most, 1)));
}

}  // namespace

void RunChain(const ChainRequest& request) {
    CheckSeed(request);
    CheckStandardInput(request);
    const OutputKind kind = DecideOutput(request.output, request.to, LastRendered(request.steps));
    InputRequest input = request.input;
    input.keepAlpha = request.steps.empty() && HasAlpha(kind);
    std::unique_ptr<FrameSource> source = OpenSource(input);
    std::vector<std::unique_ptr<FrameSource>> overlaySources;
    for (const OverlayRequest& overlay : request.overlays) {
        overlaySources.push_back(OpenOverlay(overlay));
    }
    const Matrix matrix = ChooseMatrix(request, source->Info());
    bool rgbOverlay = false;
    std::vector<std::unique_ptr<Overlay>> overlays;
    for (std::size_t i = 0; i < overlaySources.size(); ++i) {
        rgbOverlay = rgbOverlay || overlaySources[i]->Info().format->IsRgb();
        overlays.push_back(std::make_unique<Overlay>(request.overlays[i], std::move(overlaySources[i]), matrix));
    }

    Feed feed(std::move(source), request, std::move(overlays));
    std::vector<Worker> workers;
    for (std::size_t i = 0; i < CountWorkers(request.jobs, feed.Info()); ++i) {
        workers.emplace_back(Chain(feed.Info(), request.steps, EndOf(request, kind, feed.Info()), matrix));
    }
    const Chain& chain = workers.front().chain;
    CheckMatrix(request.matrix, matrix, chain.CapturesRgb() || rgbOverlay, chain.RendersRgb());
    feed.PlaceOverlays(chain.Backgrounds());
    const std::unique_ptr<FrameSink> sink = OpenSink(request.output, kind, chain.Info(), request.policy);
    SayAssumptions(request, feed.Info(), chain);
    Progress progress(feed.Info());
    Workers(std::move(workers), feed, *sink, progress, request.seed).Run();
}

}  // namespace korframe
