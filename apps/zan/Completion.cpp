#include "apps/zan/Completion.h"

#include "apps/zan/Options.h"

#include <algorithm>
#include <functional>
#include <map>

namespace zan::cli {

namespace {

struct Word {
    std::string text;
    std::string description;
};

// What may stand behind a command: `edit update`, or nothing for the program itself.
struct Place {
    std::string command;
    std::vector<Word> words;
    bool takesConnection = false;
    bool takesFile = false;
};

std::vector<Place> placesOf(CommandEntry const& command, std::string const& path) {
    Place place{path, {}, false, false};
    std::vector<Place> below;
    for (CommandEntry const& each : command.commands) {
        place.words.push_back({each.name, each.description});
        std::vector<Place> const places =
            placesOf(each, path.empty() ? each.name : path + " " + each.name);
        below.insert(below.end(), places.begin(), places.end());
    }
    for (OptionEntry const& option : command.options) {
        place.takesConnection |= option.names.empty() && option.kind == connectionKind;
        place.takesFile |= option.names.empty() && option.kind == fileKind;
        for (std::string const& name : option.names) {
            place.words.push_back({name, option.description});
        }
        for (std::string const& value :
             option.names.empty() ? choicesOf(option.kind) : std::vector<std::string>()) {
            place.words.push_back({value, option.description});
        }
    }
    below.insert(below.begin(), std::move(place));
    return below;
}

// The options that take a value, by name, with its kind.
void collectKinds(CommandEntry const& command, std::map<std::string, std::string>& kinds) {
    for (OptionEntry const& option : command.options) {
        for (std::string const& name : option.names) {
            if (!option.kind.empty()) {
                kinds.emplace(name, option.kind);
            }
        }
    }
    for (CommandEntry const& each : command.commands) {
        collectKinds(each, kinds);
    }
}

std::string joined(std::vector<std::string> const& texts, std::string const& separator) {
    std::string all;
    for (std::string const& text : texts) {
        all += (all.empty() ? "" : separator) + text;
    }
    return all;
}

// In single quotes, as all three shells take it; fish has a way of its own for the quote itself.
std::string quoted(std::string const& text, std::string const& quote = "'\\''") {
    std::string all = "'";
    for (char const c : text) {
        all += c == '\'' ? quote : std::string(1, c);
    }
    return all + "'";
}

std::string paths(std::vector<Place> const& places) {
    std::vector<std::string> all;
    for (Place const& place : places) {
        if (!place.command.empty()) {
            all.push_back(quoted(place.command));
        }
    }
    return joined(all, "|");
}

// The lines of a `case` over the options that take a value.
std::string valueCases(CommandEntry const& program, std::string const& files,
                       std::function<std::string(std::vector<std::string> const&)> const& offer) {
    std::map<std::string, std::string> kinds;
    collectKinds(program, kinds);
    std::string text;
    for (auto const& [name, kind] : kinds) {
        std::vector<std::string> const choices = choicesOf(kind);
        std::string const action = kind == fileKind  ? files
                                   : choices.empty() ? ":"
                                                     : offer(choices);
        text += "        " + name + ") " + action + "; return ;;\n";
    }
    return text;
}

std::vector<std::string> textsOf(std::vector<Word> const& words) {
    std::vector<std::string> texts;
    std::ranges::transform(words, std::back_inserter(texts), &Word::text);
    return texts;
}

std::vector<std::string> globalOptions(std::vector<Place> const& places) {
    std::vector<std::string> options = textsOf(places.front().words);
    std::erase_if(options, [](std::string const& word) { return !word.starts_with('-'); });
    return options;
}

// The lines of fish's language, each of which says when it counts.
class FishLines {
public:
    std::string const& text() const { return text_; }
    std::vector<std::string> const& commands() const { return commands_; }

    void add(CommandEntry const& command, std::string const& path) {
        std::string const here = "complete -c zan -n " + inFish("__zan_is_at " + path);
        for (CommandEntry const& each : command.commands) {
            commands_.push_back(each.name);
            text_ += here + " -a " + each.name + " -d " + inFish(each.description) + "\n";
            add(each, path.empty() ? each.name : path + " " + each.name);
        }
        // The options of the program itself may stand behind every command.
        std::string const anywhere = path.empty() ? "complete -c zan" : here;
        for (OptionEntry const& option : command.options) {
            std::string const what = option.names.empty() ? argument(option) : named(option);
            if (!what.empty()) {
                text_ += anywhere + what + " -d " + inFish(option.description) + "\n";
            }
        }
    }

private:
    static std::string inFish(std::string const& text) { return quoted(text, "\\'"); }

    static std::string argument(OptionEntry const& option) {
        std::vector<std::string> const choices = choicesOf(option.kind);
        return option.kind == connectionKind ? " -a '(__zan_connections)'"
               : option.kind == fileKind     ? " -F"
               : choices.empty()             ? ""
                                             : " -a " + inFish(joined(choices, " "));
    }

    static std::string named(OptionEntry const& option) {
        std::string line;
        for (std::string const& name : option.names) {
            bool const isLong = name.starts_with("--");
            line += (isLong ? " -l " : " -s ") + name.substr(isLong ? 2 : 1);
        }
        std::vector<std::string> const choices = choicesOf(option.kind);
        if (!option.kind.empty()) {
            line += option.kind == fileKind ? " -r -F" : " -x";
            line += choices.empty() ? "" : " -a " + inFish(joined(choices, " "));
        }
        return line;
    }

    std::string text_;
    std::vector<std::string> commands_;
};

// The fixed part of each script; what stands between two @ is put in.

constexpr char const* bashScript = R"script(# bash completion of zan; made by "zan completion bash"
_zan() {
    # The shell's own words are broken at colons, which URLs have.
    local line=${COMP_LINE:0:COMP_POINT} words current previous command= each
    local offered= connections= files= engine=() name=
    COMPREPLY=()
    read -ra words <<<"$line"
    [[ $line == *[[:space:]] ]] && words+=("")
    current=${words[-1]} previous=${words[-2]}
    for each in "${words[@]:1:${#words[@]}-2}"; do
        case "${command:+$command }$each" in
        @paths@) command=${command:+$command }$each ;;
        esac
        case "$name" in
        --url|--config|--user) engine+=("$name" "$each") ;;
        esac
        name=$each
    done
    case "$previous" in
@values@    esac
    case "$command" in
@places@    esac
    if [[ $connections && $current != -* ]]; then
        while IFS= read -r name; do
            [[ $name == "$current"* ]] && COMPREPLY+=("$(printf %q "$name")")
        done < <("${words[0]}" "${engine[@]}" complete-connections 2>/dev/null)
        return
    fi
    if [[ $files && $current != -* ]]; then
        compopt -o filenames
        COMPREPLY=($(compgen -f -- "$current"))
        return
    fi
    COMPREPLY=($(compgen -W "$offered @global@" -- "$current"))
}
complete -F _zan zan
)script";

constexpr char const* zshScript = R"script(#compdef zan
# zsh completion of zan; made by "zan completion zsh"
_zan() {
    local command= each name= connections= files=
    local -a offered global engine names
    for each in "${(@)words[2,CURRENT-1]}"; do
        case "${command:+$command }$each" in
        @paths@) command=${command:+$command }$each ;;
        esac
        case "$name" in
        --url|--config|--user) engine+=("$name" "$each") ;;
        esac
        name=$each
    done
    case "${words[CURRENT-1]}" in
@values@    esac
    case "$command" in
@places@    esac
    if [[ -n $connections && $PREFIX != -* ]]; then
        names=("${(@f)$("${words[1]}" "${engine[@]}" complete-connections 2>/dev/null)}")
        compadd -a names
        return
    fi
    if [[ -n $files && $PREFIX != -* ]]; then
        _files
        return
    fi
    global=(@global@)
    _describe 'zan' offered
    [[ $PREFIX == -* ]] && compadd -a global
}
if [[ $zsh_eval_context[-1] == loadautofunc ]]; then
    _zan "$@"
else
    compdef _zan zan
fi
)script";

constexpr char const* fishScript = R"script(# fish completion of zan; made by "zan completion fish"
function __zan_is_at --description 'Whether these commands were given, and no further one'
    set -l given
    for each in (commandline -opc)[2..-1]
        contains -- $each $__zan_commands; and set -a given $each
    end
    test "$given" = "$argv"
end
function __zan_connections
    set -l words (commandline -opc)
    set -l engine
    for at in (seq 2 (count $words))
        contains -- $words[$at] --url --config --user
        and set -a engine $words[$at] $words[(math $at + 1)]
    end
    $words[1] $engine complete-connections 2>/dev/null
end
set -g __zan_commands @commands@
complete -c zan -f
@lines@)script";

std::string filled(std::string script, std::map<std::string, std::string> const& parts) {
    for (auto const& [name, part] : parts) {
        std::size_t const at = script.find("@" + name + "@");
        script.replace(at, name.size() + 2, part);
    }
    return script;
}

std::string bashPlace(Place const& place) {
    return "    " + quoted(place.command) +
           ") offered=" + quoted(joined(textsOf(place.words), " ")) +
           (place.takesConnection ? " connections=yes" : "") +
           (place.takesFile ? " files=yes" : "") + " ;;\n";
}

std::string zshPlace(Place const& place) {
    std::string text = "    " + quoted(place.command) + ")\n        offered=(\n";
    for (Word const& word : place.words) {
        text += "            " + quoted(word.text + ":" + word.description) + "\n";
    }
    return text + "        )\n" + (place.takesConnection ? "        connections=yes\n" : "") +
           (place.takesFile ? "        files=yes\n" : "") + "        ;;\n";
}

std::string allOf(std::vector<Place> const& places, std::string (*text)(Place const&)) {
    std::string all;
    for (Place const& place : places) {
        all += text(place);
    }
    return all;
}

} // namespace

std::string bashCompletion(CommandEntry const& program) {
    std::vector<Place> const places = placesOf(program, "");
    std::string const files = "compopt -o filenames; COMPREPLY=($(compgen -f -- \"$current\"))";
    auto const offer = [](std::vector<std::string> const& choices) {
        return "COMPREPLY=($(compgen -W " + quoted(joined(choices, " ")) + " -- \"$current\"))";
    };
    return filled(bashScript, {{"paths", paths(places)},
                               {"values", valueCases(program, files, offer)},
                               {"places", allOf(places, bashPlace)},
                               {"global", joined(globalOptions(places), " ")}});
}

std::string zshCompletion(CommandEntry const& program) {
    std::vector<Place> const places = placesOf(program, "");
    auto const offer = [](std::vector<std::string> const& choices) {
        return "compadd -- " + joined(choices, " ");
    };
    return filled(zshScript, {{"paths", paths(places)},
                              {"values", valueCases(program, "_files", offer)},
                              {"places", allOf(places, zshPlace)},
                              {"global", joined(globalOptions(places), " ")}});
}

std::string fishCompletion(CommandEntry const& program) {
    FishLines lines;
    lines.add(program, "");
    return filled(fishScript,
                  {{"commands", joined(lines.commands(), " ")}, {"lines", lines.text()}});
}

} // namespace zan::cli
