# SPDX-License-Identifier: Apache-2.0
# Completion of hcy for fish. Options are those that `hcy help COMMAND` names.

# The words before the cursor, without the one that is being written.
function __hcy_count
    count (commandline -opc)
end

function __hcy_command
    set -l words (commandline -opc)
    test (count $words) -ge 2; and echo $words[2]
end

# The names of the servers in the configuration file.
function __hcy_servers
    set -l config ~/.config/hcy/config.toml
    set -q XDG_CONFIG_HOME; and set config $XDG_CONFIG_HOME/hcy/config.toml
    set -q HCY_CONFIG; and set config $HCY_CONFIG
    sed -n -e 's/^ *\[servers\.\([A-Za-z0-9_-]*\)\].*/\1/p' -e 's/^ *\[servers\."\([^"\\\\]*\)"\].*/\1/p' \
        -e "s/^ *\[servers\.'\([^']*\)'\].*/\1/p" $config 2>/dev/null
end

# The arguments before the word, without the command, options and their values.
function __hcy_given
    set -l is_value 0
    for word in (commandline -opc)[3..]
        if test $is_value -eq 1
            set is_value 0
        else if contains -- $word --ca --cacert --crl --crlfile -E --cert --key --key-pass-file \
                -o --output --each --save-request --save-reply -n --nargout -m --timeout --max-time \
                --max-reply --width --delimiter --retry -j --jobs --calls --threads --duration \
                --warmup --rate --against
            set is_value 1
        else if not string match -qr -- '^-.' $word
            printf '%s\n' $word
        end
    end
end

# Whether the word is the URL of a function, or its path after a server.
function __hcy_is_function
    contains -- (__hcy_command) call bench; or return
    test (commandline -opc)[-1] = --against; and return
    set -l given (__hcy_given)
    test (count $given) -eq 0; or begin
        test (count $given) -eq 1; and string match -q '@*' -- $given; and not string match -q '*/*' -- $given
    end
end

# Functions of a server, or servers of the configuration file.
function __hcy_functions
    set -l word (string unescape -- (commandline -ct))
    set -l given (__hcy_given)
    set -l server
    set -l before
    if test (count $given) -eq 1; and not test (commandline -opc)[-1] = --against
        set server $given
    else if string match -q '@*/*' -- $word
        set server (string split -m 1 / -- $word)[1]
        set before $server/
    else if string match -qr '^https?://[^/]*/' -- $word
        set server (string match -r '^https?://[^/]*' -- $word)
        set before $server/
    else if string match -q '@*' -- $word
        printf '@%s/\n' (__hcy_servers)
        return
    end
    for name in (env HCY_NO_PROMPT=1 hcy list $server --raw --timeout 1 2>/dev/null)
        printf '%s\n' "$before$name"
    end
end

# The options of a command, each with its description after a tab.
function __hcy_options
    hcy (__hcy_command) --help 2>/dev/null | awk '/^ +-/ {
        sub(/^ +/, "")
        gap = index($0, "  ")
        names = gap ? substr($0, 1, gap) : $0
        text = gap ? substr($0, gap) : ""
        sub(/^ +/, "", text)
        for (; match(names, /--[a-z-]+/); names = substr(names, RSTART + RLENGTH)) {
            print substr(names, RSTART, RLENGTH) "\t" text
        }
    }'
end

# An argument: a file after an @, or a class.
function __hcy_arguments
    set -l word (commandline -ct)
    if string match -q '*@*' -- $word
        set -l parts (string match -r '^(.*?@)(.*)$' -- $word)
        __fish_complete_path $parts[3] | string replace -r '^' $parts[2]
    else if test -n "$word"
        printf '%s:\n' double single int8 int16 int32 int64 uint8 uint16 uint32 uint64 logical char \
            struct cell complex sparse float64 float32 bool complex64 complex128 json text csv tsv npy
    end
end

function __hcy_needs_file
    set -l words (commandline -opc)
    contains -- $words[-1] --ca --cacert --crl --crlfile -E --cert --key --key-pass-file -o \
        --output --each --save-request --save-reply
    or test "$words[2]" = show
end

function __hcy_is_option
    string match -q -- '-*' (commandline -ct)
end

complete -c hcy -f
complete -c hcy -n 'test (__hcy_count) -eq 1' -a 'call bench list encode show serve help'
complete -c hcy -n 'test (__hcy_count) -eq 1; and __hcy_is_option' -a '--help --version'
complete -c hcy -n 'test "$(__hcy_command)" = help' -a 'call bench list encode show serve'
complete -c hcy -n 'test (__hcy_count) -ge 2; and __hcy_is_option' -a '(__hcy_options)'
complete -c hcy -n __hcy_needs_file -F
complete -c hcy -n '__hcy_is_function; and not __hcy_needs_file; and not __hcy_is_option' -a '(__hcy_functions)'
complete -c hcy -n 'test "$(__hcy_command)" = list; and test (count (__hcy_given)) -eq 0; and not __hcy_needs_file; and not __hcy_is_option' -a '@(__hcy_servers)'
complete -c hcy -n 'contains -- (__hcy_command) call bench encode; and not __hcy_is_function; and not __hcy_needs_file; and not __hcy_is_option' -a '(__hcy_arguments)'
