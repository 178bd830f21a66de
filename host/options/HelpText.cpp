#include "host/options/HelpText.h"

#include "host/options/ParameterOptions.h"

namespace host {

static const char kHead[] = //
    R"(Usage: brillatrix [options] PHOTO OUT
       brillatrix batch [options] INPUT...      many photos; brillatrix help batch
       brillatrix inplace [options] PHOTO...    photos replaced; brillatrix help inplace
       brillatrix --lights ... PHOTO
Adds stars to the lights of PHOTO and writes the result to OUT, by OUT's ending. PHOTO may be - for standard
input, OUT for standard output: brillatrix - - <night.jpg >stars.jpg

Reads jpg, png, tif, webp, avif, gif, bmp, ppm, pgm, pam, pfm, told by content; writes the same kinds.

  brillatrix --effect hollywood --length 70 night.jpg stars.jpg
  brillatrix --preset Harbour --depth 16 night.tif stars.tif
  brillatrix batch --out stars --jobs 2 *.jpg
)";

static const char kParameterHead[] = R"(
What is not given is the default, so that a command always means the same picture:
)";

static const char kParameterTail[] =
    R"(  --effects-only           the stars alone, on black
  --preset NAME            all parameters from a saved set; options given here go before it
  --list-presets           the saved sets, which are those of the filter's dialog
  --save-preset NAME       save the parameters; PHOTO and OUT may be left out
  --settings FILE.sss      all parameters from a set's file (also --preset-file)
  --last                   all parameters of the last run instead of the defaults
)";

static const char kWriting[] = R"(
The file, which is written like the photo's where nothing else is said:
  --quality 1..100         of jpg, webp, avif (jpg of another kind of photo: 95)
  --subsampling 444|420    colour of a jpg in full or at half the resolution
  --compression KIND       of tif: none, lzw, deflate, packbits, jpeg
  --format KIND            the kind for an OUT without such an ending, and for - (the photo's own)
  --depth 8|16|32          bits a sample; 32 are floats
  --metadata KIND          keep (all), no-gps (not the GPS position), none
  --no-strict              take a jpg that is damaged in its middle, with a warning; --strict refuses it
)";

static const char kRun[] =
    R"(  --mask IMAGE             only lights where IMAGE is white; of the photo's size
  --roi LEFT,TOP,RIGHT,BOTTOM
                           filter this rectangle alone; right and bottom are exclusive
  --plugin FILE            the filter module (BrillatrixX64.8bf beside this program)
  --filter FILE.8bf        run another 64-bit filter with its own default parameters; with --dialog its
                           windows open, without they are answered with OK; --about tells its name
  --quiet                  errors and warnings of loss only
  --silent                 errors only
)";

static const char kSingleTail[] = R"(
What the filter found; OUT may then be left out:
  --lights                 print the table of the lights, brightest first
  --lights-csv FILE        write it with positions, diameters, colours, ranks and states
  --lights-svg FILE        draw it, of the photo's size, to be laid over the photo
  --contact-sheet FILE     the photo with each of the seven effects, side by side
  --debug-images DIR       write four pictures: analysis, selection, lights and star .png
  --show-lights            open the table in a window
  --show-debug             open the pictures in a window

  --about                  what the filter module says about itself
  -h, --help; -V, --version
)";

static const char kStatuses[] = R"(
Exit status: 0 done, 2 wrong usage, 3 a file could not be read or written (batch: every photo failed),
4 the plug-in reported an error, 5 cancelled, 6 there is no screen for a window, 7 some photos failed.
)";

static const char kBatch[] = R"(Usage: brillatrix batch [options] INPUT...
Adds stars to many photos. INPUT is a file, a folder, a pattern such as night*.jpg, @LIST (a file with one
name a line) or - (names on standard input).

  brillatrix batch --out stars --preset Harbour photos
  brillatrix batch --recursive --exclude "*_stars.*" --name "{n:04}_{name}.{ext}" --out stars photos
  brillatrix batch --resume --out stars photos          goes on after Ctrl+C

Which photos, and where to:
  --recursive              folders with their sub-folders, which come again below --out
  --include GLOB, --exclude GLOB
                           only, or all but, the files of such names; may be given again
  --out DIR                folder of the results, made when it is missing (beside each photo)
  --name PATTERN           ({name}_stars.{ext}); also {dir}, {n} or {n:04}, {preset}, {date}
  --existing RULE          of results that are there: fail (before any work), skip, overwrite, number

How:
  --jobs 1..64             photos at a time (one a processor)
  --memory MB              for all of them together, by the photos' sizes (half of what is free)
  --on-error continue|stop what one failed photo means for those that are not begun (continue)
  --timeout SECONDS        at most so long a photo
  --resume                 leave out what an earlier, unfinished batch has done
  --dry-run                only tell what would be done
  --json, --json=FILE      a line a photo: input, output, status, reason, notes, lights, stars, milliseconds;
                           printed, or into FILE, which may replace an older report alone
  --contact-sheet FILE     the photos before and after, small, with their names
  --failed FILE            names of the failed photos, to be taken again with @FILE
  --progress KIND          auto (a bar on a terminal), plain (a line a photo), none

Ctrl+C finishes the photos in work, and again stops at once. What was done stays, and --resume goes on.
Parameters, --mask, --roi, the way of writing, --quiet and --silent are those of "brillatrix --help".
)";

static const char kInPlace[] = R"(Usage: brillatrix inplace [options] PHOTO...
Adds stars to photos in their own files, as an external editor does. The photo as it was is kept beside it as
PHOTO_original; one that is there already stays. Dragging photos onto brillatrix.exe does the same with
--dialog.

  --no-backup              keep no PHOTO_original
  --dialog                 choose the parameters on the first photo; the others get the same

Parameters, --mask, --roi, the way of writing, --quiet and --silent are those of "brillatrix --help".
)";

static std::string FirstPage() {
    return std::string(kHead) + kParameterHead + DescribeParameterOptions() + kParameterTail + kWriting +
           "\nThe run:\n" + HelpLine("--overwrite", "replace an OUT that exists") +
           HelpLine("--dialog", "choose the parameters in the filter's dialog; Cancel writes nothing") +
           kRun + kSingleTail + kStatuses;
}

std::string HelpText(const std::string &page) {
    if (page.empty())
        return FirstPage();
    if (page == "batch")
        return std::string(kBatch) + kStatuses;
    return page == "inplace" ? std::string(kInPlace) + kStatuses : "";
}

} // namespace host
