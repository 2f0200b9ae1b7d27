# Shell functions shared by the session script, the demo and the install checks. Sourced.

# wait_for SECONDS COMMAND...: runs the command (quietly) until it succeeds; fails after SECONDS.
wait_for() {
    local deadline=$((SECONDS + $1)); shift
    until "$@" >/dev/null 2>&1; do
        ((SECONDS < deadline)) || return 1
        sleep 0.05
    done
}

# png_size FILE: prints WIDTHxHEIGHT from the PNG header.
png_size() {
    local w0 w1 w2 w3 h0 h1 h2 h3
    read -r w0 w1 w2 w3 h0 h1 h2 h3 <<< "$(od -An -tu1 -j16 -N8 "$1" | tr -s ' ')"
    echo "$(( (w0 << 24) | (w1 << 16) | (w2 << 8) | w3 ))x$(( (h0 << 24) | (h1 << 16) | (h2 << 8) | h3 ))"
}
