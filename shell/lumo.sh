# A library for POSIX shell scripts that call lumocmd; lumo.sh(7) describes it. It uses names that begin with
# lumo_ or LUMO_ and changes nothing else.
# shellcheck shell=sh disable=SC2034 # what it sets is the caller's to read

lumo_newline='
'
lumo_escape=$(printf '\033')
lumo_red="${lumo_escape}[0;31m[lumocmd] "

# No call yet.
LUMO_CODE=
LUMO_PREFIX=
LUMO_EXIT=
LUMO_OUTPUT=
LUMO_STATE=
LUMO_VALUE=
lumo_raw=
lumo_types=

# Runs lumocmd with these arguments and sets LUMO_EXIT, LUMO_CODE, LUMO_PREFIX and LUMO_OUTPUT.
# Succeeds only with code 0: codes such as 256 look like success in 8 bits.
lumo_call() {
    lumo_call_within "${LUMO_LIMIT:-}" "$@"
}

# The same within a time limit. Collects the types among the arguments in lumo_types, s for the web service and
# d for a daemon, and looks up a socket in LUMO_DIRECTORY. Each option has an argument, attached or as the next
# word.
lumo_call_within() {
    lumo_limit=$1
    shift
    lumo_types=
    lumo_option=
    for lumo_word in "$@"; do
        shift
        lumo_pair=$lumo_option$lumo_word
        lumo_option=
        case $lumo_pair in
        -?) lumo_option=$lumo_word ;;
        -t[Ss][Oo][Aa][Pp]) lumo_types=${lumo_types}s ;;
        -t*) lumo_types=${lumo_types}d ;;
        -s*/*) ;;
        -s*)
            lumo_name=${lumo_pair#-s}
            lumo_word=${lumo_word%"$lumo_name"}${LUMO_DIRECTORY:+$LUMO_DIRECTORY/}$lumo_name
            ;;
        esac
        set -- "$@" "$lumo_word"
    done
    lumo_exchange "$@"
}

lumo_exchange() {
    LUMO_EXIT=126
    lumo_raw=
    # Some shells print a message about a command that a signal ended; lumocmd's own output is all kept.
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
    case $lumo_types,$LUMO_CODE in
    s,503 | s,505 | s,507) lumo_own=$(lumo_ask_again "$@" 2>/dev/null) ;;
    esac
    [ "$LUMO_CODE" = 0 ] || [ "$LUMO_EXIT" -ne 0 ] || return 1
    return "$LUMO_EXIT"
}

# Writes all that lumocmd says with these arguments, within the time limit.
lumo_run() {
    set -- lumocmd "$@"
    [ -z "$lumo_limit" ] || set -- timeout "$lumo_limit" "$@"
    "$@" 2>&1
}

# Prints the outcome of a call whose code may be the web service's or lumocmd's own. Calls lumocmd again with
# an unusable url, so that nothing is sent: it checks function and parameters before the url, and its own code
# comes again.
lumo_ask_again() {
    set -- -u : "$@"
    lumo_option=
    for lumo_word in "$@"; do
        shift
        case $lumo_option$lumo_word in
        -?) lumo_option=$lumo_word ;;
        -u*) lumo_word=-u: lumo_option= ;; # as an option or as the url after one, it is unusable
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

# Parses the last line. It is a status only if its low 8 bits are the exit status: the last line of a run that
# was killed may be any.
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
    *s*) echo unknown ;; # several types: which of them was called is not known
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

# A service can send any code and any report but the one with which lumocmd refuses a url.
lumo_outcome_of_service() {
    case $LUMO_CODE,$lumo_raw in
    502,"Error 3986 fault "* | 508,"Error 3986 fault "*) echo invalid ;;
    502,* | 508,*) echo unknown ;;
    503,* | 505,* | 507,*) echo "$lumo_own" ;;
    *) echo refused ;;
    esac
}

# A daemon may answer lumocmd's own numbers. lumocmd's own failures have a red message.
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
# none, with a message when there are no such lines at all.
lumo_value() {
    lumo_start="${lumo_escape}[0;32m[lumocmd] $1: "
    case $lumo_raw in
    *"$lumo_start"*) ;;
    *"${lumo_escape}[0;32m[lumocmd] "*) return 1 ;;
    *)
        lumo_why='-v ON has to be the first option'
        [ -n "$LUMO_CODE" ] || lumo_why="the call has no status, $(lumo_status)"
        echo "lumo_value: no result lines were shown: $lumo_why" >&2
        return 1
        ;;
    esac
    lumo_rest=${lumo_raw#*"$lumo_start"}
    printf '%s\n' "${lumo_rest%%"${lumo_escape}[0;39m"*}"
}

# Asks the web service for an element and sets LUMO_STATE and LUMO_VALUE.
lumo_get() {
    LUMO_STATE=
    LUMO_VALUE=
    lumo_session=${2:-${LUMO_SESSION:-}}
    if [ -z "$lumo_session" ]; then
        lumo_refuse 'lumo_get: no session, neither as second argument nor in LUMO_SESSION'
        return 1
    fi
    if ! lumo_joined=$(lumo_list "$lumo_session" "$1"); then
        lumo_refuse 'lumo_get: the element or the session is none'
        return 1
    fi
    lumo_call -v ON -t SOAP -u "${LUMO_URL:-http://localhost/cgi-bin/lumows}" \
        -f SERVICE_GETELEMENTSTATUS -p "$lumo_joined" || return $?
    LUMO_STATE=$(lumo_value Status) && LUMO_VALUE=$(lumo_value 'Current Value') && return 0
    echo "lumo_get: the answer lacks the status or the value of $1" >&2
    return 1
}

# Reports why there was no call, and sets the variables as after one that could not be started.
lumo_refuse() {
    LUMO_CODE=
    LUMO_PREFIX=
    LUMO_EXIT=126
    LUMO_OUTPUT=$1
    lumo_raw=
    printf '%s\n' "$1" >&2
}

# Prints one entry of a list: the one with this number, or what follows a name that ends with "=".
lumo_item() {
    lumo_rest=$1
    lumo_separator=${3:-;}
    lumo_number=1
    while :; do
        lumo_entry=${lumo_rest%%"$lumo_separator"*}
        case $2 in
        *=) lumo_key=${lumo_entry%%=*}= ;;
        *) lumo_key=$lumo_number ;;
        esac
        [ "$lumo_key" != "$2" ] || break
        [ "$lumo_entry" != "$lumo_rest" ] || return 1
        lumo_rest=${lumo_rest#*"$lumo_separator"}
        lumo_number=$((lumo_number + 1))
    done
    case $2 in
    *=) lumo_entry=${lumo_entry#"$2"} ;;
    esac
    printf '%s\n' "$lumo_entry"
}

# Does a daemon of this type accept connections at the socket? 0: yes, 1: no, 2: not known. The request is too
# long to be sent, which lumocmd checks for gateways after it has connected. For FSMCore it checks that before,
# so FSMCore's socket is tried like the EIB gateway's.
lumo_alive() {
    lumo_limit=${LUMO_LIMIT:-5}
    case $(printf '%s\n' "$1" | LC_ALL=C tr '[:lower:]' '[:upper:]') in
    SOAP)
        lumo_call_within "$lumo_limit" -t SOAP -u "$2" -f SERVICE_TEST || :
        case $(lumo_outcome) in
        'done' | refused) return 0 ;;
        *) return 2 ;;
        esac
        ;;
    FSMCORE | EIBLOCAL) set -- EIBLOCAL "$2" SENDEIBUSSETDATAGRAM '0|0|0|' ;;
    SMSTOOLLOCAL) set -- "$1" "$2" SENDSMSTOOLDATAGRAM '0|0|' ;;
    LINTRONICLOCAL) set -- "$1" "$2" SENDLINTRONICDATAGRAM '0|00|000|' ;;
    TECNOUTLOCAL) set -- "$1" "$2" SENDTECNOUTCOMMANDDATAGRAM '0|0|0|' ;;
    VIVALDILOCAL) set -- "$1" "$2" SENDVIVALDISETDATAGRAM '0|0|0|0|0|0|0|0|0|0|' ;;
    BENTELLOCAL) set -- "$1" "$2" SENDBENTELCOMMANDDATAGRAM '0|0|0|' ;;
    TUTONDOLOCAL) set -- "$1" "$2" SENDTUTONDOSETDATAGRAM '0|0|0|' ;;
    *)
        lumo_refuse "lumo_alive: no type '$1' that can be tried"
        return 2
        ;;
    esac
    lumo_call_within "$lumo_limit" -t "$1" -s "$2" -f "$3" -p "$4$(printf '%01024d' 0)" || :
    case $LUMO_CODE,$(lumo_outcome),$LUMO_OUTPUT in
    *06,invalid,*) return 0 ;;
    *,unreachable,*"'No such file or directory'"* | *,unreachable,*"'Connection refused'"*) return 1 ;;
    *) return 2 ;;
    esac
}

# lumo_call, again and again while a daemon could not be reached: LUMO_TRIES calls (5) with pauses
# that begin at LUMO_DELAY seconds (1) and double, all within LUMO_DEADLINE seconds if it is set.
lumo_retry() {
    lumo_tries=${LUMO_TRIES:-5}
    lumo_delay=${LUMO_DELAY:-1}
    lumo_end=
    case ${LUMO_DEADLINE:-} in
    '') ;;
    *[!0-9]* | 0?*) # which shells would take for a name, or for octal
        lumo_refuse "lumo_retry: LUMO_DEADLINE is no number of seconds: $LUMO_DEADLINE"
        return 126
        ;;
    *) lumo_end=$(($(lumo_clock) + LUMO_DEADLINE)) ;;
    esac
    while ! lumo_call_within "$(lumo_limit_of_try)" "$@"; do
        lumo_tries=$((lumo_tries - 1))
        if [ "$lumo_tries" -le 0 ] || [ "$(lumo_outcome)" != unreachable ] || lumo_is_late; then
            [ "$LUMO_EXIT" -ne 0 ] || return 1
            return "$LUMO_EXIT"
        fi
        [ "$lumo_delay" -eq 0 ] || sleep "$lumo_delay"
        lumo_delay=$((lumo_delay * 2))
    done
}

# Prints LUMO_LIMIT, or what is left until the deadline if that is less.
lumo_limit_of_try() {
    lumo_seconds=${LUMO_LIMIT:-}
    if [ -n "$lumo_end" ]; then
        lumo_left=$((lumo_end - $(lumo_clock)))
        [ "$lumo_left" -gt 0 ] || lumo_left=1
        lumo_whole=${lumo_seconds%%[!0-9]*}
        # timeout takes 0 for no limit.
        if [ "${lumo_seconds:-0}" = 0 ] || [ "${lumo_whole:-0}" -ge "$lumo_left" ]; then
            lumo_seconds=$lumo_left
        fi
    fi
    printf '%s\n' "$lumo_seconds"
}

# Would the next pause last until the deadline?
lumo_is_late() {
    [ -n "$lumo_end" ] && [ "$(($(lumo_clock) + lumo_delay))" -ge "$lumo_end" ]
}

# Prints seconds of the monotonic clock; where /proc is not mounted, of the system time.
lumo_clock() {
    if [ -r /proc/uptime ]; then
        IFS=. read -r lumo_seconds lumo_rest </proc/uptime
        printf '%s\n' "$lumo_seconds"
    else
        date +%s
    fi
}

# Prints the values as one list for -p. Refuses what the list cannot carry.
lumo_list() {
    lumo_joined=
    for lumo_entry in "$@"; do
        case $lumo_entry in
        '' | *'|'* | *"$lumo_newline"*)
            echo 'lumo_list: a value is empty or holds a bar or a line feed' >&2
            return 1
            ;;
        esac
        lumo_joined="${lumo_joined}${lumo_joined:+|}$lumo_entry"
    done
    printf '%s\n' "$lumo_joined"
}

# Copies its input without the colours.
lumo_plain() {
    sed "s/${lumo_escape}\\[[0-9;]*m//g"
}
