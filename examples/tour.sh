# What ./demo shows once the server and the daemon run: an agent configured, asked by managers and
# heard by a receiver. Sourced: prepare, configure on a new database, use. Each command is run as it
# is shown, in the directory $dir; an answer that is not the expected one ends the tour with a
# message. Uses port, agent_port, trap_port, dir and bin of ./demo; sets agent and receiver, the pids
# of what it starts, which ./demo ends.

if [ -t 1 ] && [ -z "${NO_COLOR:-}" ] && [ "${TERM:-dumb}" != dumb ]; then
  bold=$'\e[1m' command_colour=$'\e[36m' error_colour=$'\e[31m' plain=$'\e[0m'
else
  bold='' command_colour='' error_colour='' plain=''
fi

heading() { printf '\n%s== %s%s\n' "$bold" "$*" "$plain"; }

show_answer() {
  local line
  while IFS= read -r line; do
    case $line in
      error:*) printf '    %s%s%s\n' "$error_colour" "$line" "$plain" ;;
      *) printf '    %s\n' "$line" ;;
    esac
  done <<<"$1"
}

# run STATUS TEXT COMMAND: shows the command and its answer, which must end with STATUS and hold
# TEXT.
run() {
  local status=0 answer
  printf '%s  $ %s%s\n' "$command_colour" "$3" "$plain"
  answer=$(cd "$dir" && eval "$3" 2>&1) || status=$?
  [ -z "$answer" ] || show_answer "$answer"
  [ "$status" -eq "$1" ] || die "that ended with status $status instead of $1"
  [[ $answer == *"$2"* ]] || die "the answer should have held: $2"
}

# beside TEXT LEFT RIGHT: shows two commands and their answers side by side; the right one's must
# hold TEXT.
beside() {
  local left right line row width=0
  printf '%s  $ %s\n  $ %s%s\n' "$command_colour" "$2" "$3" "$plain"
  mapfile -t left < <(eval "$2")
  mapfile -t right < <(eval "$3")
  [[ ${right[*]} == *"$1"* ]] || die "the answer should have held: $1"
  for line in "${left[@]}"; do [ ${#line} -le "$width" ] || width=${#line}; done
  for ((row = 0; row < ${#left[@]} || row < ${#right[@]}; row++)); do
    line=${left[row]:-}
    printf '    %s%*s   %s\n' "$line" $((width - ${#line})) '' "${right[row]:-}"
  done
}

# wait_for FILE PATTERN COUNT SECONDS: until as many lines of the file match.
wait_for() {
  local tries=$(($4 * 20))
  until [ "$(grep -c -- "$2" "$1")" -ge "$3" ]; do
    [ $((tries -= 1)) -gt 0 ] || return 1
    sleep 0.05
  done
}

start_receiver() {
  printf 'authCommunity log public\n' >"$dir/snmptrapd.conf"
  : >"$dir/notifications"
  setsid snmptrapd -f -C -c "$dir/snmptrapd.conf" -Lf "$dir/notifications" -n -On \
    -F '%P from %b: %v\n' "udp:127.0.0.1:$trap_port" 2>"$dir/receiver.log" </dev/null &
  receiver=$!
  wait_for "$dir/notifications" NET-SNMP 1 10 ||
    die "the receiver did not start: $(tail -n 1 "$dir/notifications" "$dir/receiver.log")"
}

start_agent() {
  : >"$dir/agent.out"
  setsid standin-agent -P "$port" --dir "$dir/agent" >"$dir/agent.out" 2>"$dir/agent.log" </dev/null &
  agent=$!
  wait_for_agent 1
}

# wait_for_agent COUNT: until it serves for the so many'th time.
wait_for_agent() {
  wait_for "$dir/agent.out" 'agent serves on' "$1" 20 ||
    die "the agent did not start: $(tail -n 1 "$dir/agent.log")"
  show_answer "$(tail -n 1 "$dir/agent.out")"
}

# heard OID NAME: the receiver got that notification, as a trap and as an inform.
heard() {
  local kind line
  for kind in TRAP2 INFORM; do
    wait_for "$dir/notifications" "$kind.*OID: \.$1\b" 1 10 ||
      die "the receiver got no $kind of $2: see $dir/notifications and $dir/agent.log"
    line=$(grep -m 1 "$kind.*OID: \.$1\b" "$dir/notifications")
    show_answer "receiver: ${line%% from *}: $2"
  done
}

prepare() {
  cli=standin-cli
  [ "$port" = 4565 ] || cli+=" -P $port"
  export PATH=$bin:$PATH MIBS= MIBDIRS=
  (umask 077 && printf maple-harbour-47 >"$dir/auth" && printf quiet-lantern-12 >"$dir/priv")
  cp "$root/examples/agent.json" "$dir/"
}

# What a new database is filled with.
configure() {
  heading "An agent, from one file"
  run 0 '' "$cli load agent.json"
  run 0 '' "$cli set /snmp:snmp/agent/port $agent_port"
  say "a community as operators see it, and the row that is stored for it"
  beside 'snmpCommunityName public' "$cli show '/snmp:snmp/community{public}'" \
    "$cli show '/SNMP_COMMUNITY_MIB:SNMP-COMMUNITY-MIB/snmpCommunityTable/snmpCommunityEntry{public}'"

  heading "Four lines, and an SNMPv3 manager can log in"
  run 0 '' "$cli create '/snmp:snmp/usm/local/user{ops}'"
  run 0 '' "$cli set '/snmp:snmp/usm/local/user{ops}/auth/sha/password' <auth"
  run 0 '' "$cli set '/snmp:snmp/usm/local/user{ops}/priv/aes/password' <priv"
  run 0 '' "$cli set '/snmp:snmp/vacm/group{operators}/member{ops}/sec-model' usm"

  heading "A receiver of traps and informs is named"
  run 0 '' "printf '%s\n' 'set /snmp:snmp/target{noc}/ip 127.0.0.1' \\
        'set /snmp:snmp/target{noc}/port $trap_port' \\
        'set /snmp:snmp/target{noc}/tag confirmed unconfirmed' \\
        'set /snmp:snmp/target{noc}/v2c/sec-name reader' | $cli batch"

}

# With what is configured. It changes nothing but the engine ID, so it can be shown again.
use() {
  local manager="127.0.0.1:$agent_port" name=1.3.6.1.2.1.1.5.0 # sysName.0
  local v3='-v3 -u ops -l authPriv -a SHA -A maple-harbour-47 -x AES -X quiet-lantern-12'
  local engine=/confd_dyncfg:confdConfig/snmpAgent/snmpEngine/snmpEngineID
  local cold_start=1.3.6.1.6.3.1.1.5.1 auth_failure=1.3.6.1.6.3.1.1.5.5 # RFC 3418

  heading "The agent starts, and tells the receiver"
  start_receiver
  start_agent
  heard "$cold_start" coldStart

  heading "Managers ask it"
  run 0 router-1 "snmpget -v2c -c public -On $manager $name"
  run 0 router-1 "snmpget $v3 -On $manager $name"
  run 1 Timeout "snmpget -v2c -c guess -r 0 -t 0.3 -On $manager $name"
  say "a wrong community is told to the receiver"
  heard "$auth_failure" authenticationFailure

  heading "The engine ID changes, and the manager is still let in"
  run 0 : "$cli get $engine"
  run 0 '' "$cli set /snmp:snmp/agent/engine-id/from-text 'router-1 $(date +%s)'"
  run 0 : "$cli get $engine"
  run 0 '' "kill -HUP $agent"
  wait_for_agent 2
  run 0 router-1 "snmpget $v3 -On $manager $name"

  heading "A wrong line is refused, and the next one is taken"
  run 2 'error: ' "$cli set '/snmp:snmp/target{noc}/ip' 127.0.0.300"
  run 2 'error: Invalid subtree: 1.3.6.1.2.1.one' \
    "$cli create '/snmp:snmp/vacm/view{system-only}/subtree{1.3.6.1.2.1.one}/included'"
  run 0 '' "$cli set '/snmp:snmp/target{noc}/ip' 127.0.0.1"
}
