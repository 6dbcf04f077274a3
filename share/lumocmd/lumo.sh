# What scripts around lumocmd have in common, for any POSIX shell; lumo.sh(7) describes it.
# It owns the names that begin with lumo_ or LUMO_ and changes nothing else.
# shellcheck shell=sh

lumo_newline='
'
lumo_escape=$(printf '\033')
lumo_red="${lumo_escape}[0;31m[lumocmd] "

# No call yet.
LUMO_CODE=
LUMO_PREFIX=
LUMO_EXIT=
LUMO_OUTPUT=
lumo_raw=
lumo_types=

# Runs lumocmd with these arguments and sets LUMO_EXIT, LUMO_CODE, LUMO_PREFIX and LUMO_OUTPUT.
# Succeeds only with code 0: codes such as 256 look like success in 8 bits.
lumo_call() {
    LUMO_EXIT=126
    lumo_raw=
    # Some shells remark on a command that a time limit ended; what lumocmd says is all kept.
    {
        LUMO_EXIT=0
        lumo_raw=$(lumo_run "$@") || LUMO_EXIT=$?
    } 2>/dev/null
    lumo_read_status "${lumo_raw##*"$lumo_newline"}"
    lumo_above=$lumo_raw
    if [ -n "$LUMO_CODE" ]; then
        case $lumo_raw in
        *"$lumo_newline"*) lumo_above=${lumo_raw%"$lumo_newline"*} ;;
        *) lumo_above= ;;
        esac
    fi
    LUMO_OUTPUT=$lumo_above
    case $LUMO_OUTPUT in
    *"$lumo_escape"*) LUMO_OUTPUT=$(printf '%s\n' "$LUMO_OUTPUT" | lumo_plain) ;;
    esac
    lumo_read_types "$@"
    case $lumo_types,$LUMO_CODE in
    s,503 | s,505 | s,507) lumo_own=$(lumo_ask_again "$@" 2>/dev/null) ;;
    esac
    [ "$LUMO_CODE" = 0 ] || [ "$LUMO_EXIT" -ne 0 ] || return 1
    return "$LUMO_EXIT"
}

# Writes all that lumocmd says with these arguments, within the time limit.
lumo_run() {
    set -- lumocmd "$@"
    [ -z "${LUMO_LIMIT:-}" ] || set -- timeout "$LUMO_LIMIT" "$@"
    "$@" 2>&1
}

# Notes every type that the arguments name: s for the web service, d for another. Each option has an
# argument, attached or as the next word.
lumo_read_types() {
    lumo_types=
    lumo_option=
    for lumo_word in "$@"; do
        case $lumo_option$lumo_word in
        -?)
            lumo_option=$lumo_word
            continue
            ;;
        -t[Ss][Oo][Aa][Pp]) lumo_types=${lumo_types}s ;;
        -t*) lumo_types=${lumo_types}d ;;
        esac
        lumo_option=
    done
}

# Prints the outcome of a call whose code the web service or lumocmd itself may have found. With a
# url that cannot be used nothing is sent, and lumocmd finds out the same before it looks at that.
lumo_ask_again() {
    set -- -u : "$@"
    lumo_option=
    for lumo_word in "$@"; do
        shift
        case $lumo_option$lumo_word in
        -?) lumo_option=$lumo_word ;;
        -u*) lumo_word=-u: lumo_option= ;; # attached, or as a url: neither can be used
        *) lumo_option= ;;
        esac
        set -- "$@" "$lumo_word"
    done
    lumo_again=$(lumo_run "$@") || :
    case ${lumo_again##*"$lumo_newline"} in
    "${lumo_raw##*"$lumo_newline"}") echo invalid ;;
    LMCM-502 | LMCM-508) echo refused ;;
    *) echo unknown ;;
    esac
}

# Takes the last line apart. It is a status only if its low 8 bits are the exit status: a run that
# was cut short leaves any line as the last one.
lumo_read_status() {
    LUMO_CODE=
    LUMO_PREFIX=
    case $1 in
    *[!A-Z0-9-]* | -*) return 0 ;;
    *-*) ;;
    *) return 0 ;;
    esac
    lumo_number=${1#*-}
    lumo_digits=${lumo_number#-}
    case $lumo_digits in
    '' | *[!0-9]*) return 0 ;;
    esac
    lumo_digits=${lumo_digits#"${lumo_digits%%[!0]*}"}
    lumo_digits=${lumo_digits:-0}
    case $lumo_number in
    -*) lumo_digits=-$lumo_digits ;;
    esac
    [ "$((lumo_digits & 255))" -eq "$LUMO_EXIT" ] || return 0
    LUMO_CODE=$lumo_digits
    # shellcheck disable=SC2034 # it is the caller's to read
    LUMO_PREFIX=${1%%-*}
}

# Prints the status text of the last call, or its exit status when there was none; "exit" alone
# before the first call.
lumo_status() {
    if [ -n "$LUMO_CODE" ]; then
        printf '%s\n' "${lumo_raw##*"$lumo_newline"}"
    else
        printf '%s\n' "exit${LUMO_EXIT:+ $LUMO_EXIT}"
    fi
}

# Prints what became of the last call: done, refused, unreachable, invalid or unknown.
lumo_outcome() {
    case $LUMO_CODE,$lumo_types in
    0,*) echo 'done' ;;
    ,*) lumo_outcome_without_status ;;
    *,s) lumo_outcome_of_service ;;
    *s*) echo unknown ;; # which of several types was called, lumocmd alone knows
    503,* | 505,* | 507,*) echo invalid ;;
    502,* | 508,*) echo unknown ;;
    *) lumo_outcome_of_daemon ;;
    esac
}

lumo_outcome_without_status() {
    case $LUMO_EXIT in
    125 | 126 | 127 | 246 | 249 | 250) echo invalid ;;
    *) echo unknown ;;
    esac
}

# A service can send any code, and relay any report but the one that lumocmd begins with when it
# refuses a url.
lumo_outcome_of_service() {
    case $LUMO_CODE,$lumo_raw in
    502,"Error 3986 fault "* | 508,"Error 3986 fault "*) echo invalid ;;
    502,* | 508,*) echo unknown ;;
    503,* | 505,* | 507,*) echo "$lumo_own" ;;
    *) echo refused ;;
    esac
}

# A daemon may answer the numbers that lumocmd itself uses. What lumocmd found out, it says in red.
lumo_outcome_of_daemon() {
    case ${lumo_above##*"$lumo_newline"} in
    *"$lumo_red"*" error opening socket "*" clientside for function "*) echo unreachable ;;
    *"$lumo_red"*" not supported"* | *"$lumo_red"*" longer than "*) echo invalid ;;
    *)
        case $lumo_above in
        *"$lumo_red"*) echo unknown ;;
        *) echo refused ;;
        esac
        ;;
    esac
}

# Prints the value of a result line of the last call, such as "Current Value". Fails when there is
# none: the call needs -v ON as its first option.
lumo_value() {
    lumo_start="${lumo_escape}[0;32m[lumocmd] $1: "
    case $lumo_raw in
    *"$lumo_start"*) ;;
    *) return 1 ;;
    esac
    lumo_rest=${lumo_raw#*"$lumo_start"}
    printf '%s\n' "${lumo_rest%%"${lumo_escape}[0;39m"*}"
}

# lumo_call, again and again while a daemon could not be reached: LUMO_TRIES calls (5) with pauses
# that begin at LUMO_DELAY seconds (1) and double.
lumo_retry() {
    lumo_tries=${LUMO_TRIES:-5}
    lumo_delay=${LUMO_DELAY:-1}
    while ! lumo_call "$@"; do
        lumo_tries=$((lumo_tries - 1))
        if [ "$lumo_tries" -le 0 ] || [ "$(lumo_outcome)" != unreachable ]; then
            [ "$LUMO_EXIT" -ne 0 ] || return 1
            return "$LUMO_EXIT"
        fi
        [ "$lumo_delay" -eq 0 ] || sleep "$lumo_delay"
        lumo_delay=$((lumo_delay * 2))
    done
}

# Prints the values as one list for -p. Refuses what the list cannot carry.
lumo_list() {
    lumo_joined=
    for lumo_item in "$@"; do
        case $lumo_item in
        '' | *'|'* | *"$lumo_newline"*)
            echo 'lumo_list: a value is empty or holds a bar or a line feed' >&2
            return 1
            ;;
        esac
        lumo_joined="${lumo_joined}${lumo_joined:+|}$lumo_item"
    done
    printf '%s\n' "$lumo_joined"
}

# Copies its input without the colours.
lumo_plain() {
    sed "s/${lumo_escape}\\[[0-9;]*m//g"
}
