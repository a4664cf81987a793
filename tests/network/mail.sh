#!/usr/bin/env bash
# Sends and fetches mail with real servers: mail.sh ARCH [PROGRAM]
#
# In a network namespace that is gone afterwards, Postfix takes mail (port 25 from everybody, port
# 587 only after AUTH LOGIN) and delivers it into mailboxes that Dovecot serves by POP3; dnsmasq
# knows their name, and there is an address that never answers. The messages that the tests leave
# behind are then read by Python's mail parser.
set -euo pipefail
cd "$(dirname "$0")/../.."
. scripts/lib/wine.sh
. scripts/lib/network.sh

arch=$1
program=${2:-build/$arch/tests/test_dll.exe}
nameServer=127.0.0.53
mailUser=5000

start_name_server() {
    start_dnsmasq $nameServer --local=/example/ --host-record=mail.example,127.0.0.1
    servers+=("$started")
}

write_postfix_configuration() {
    mkdir -p "$mail/postfix" "$mail/queue" "$mail/data" "$mail/boxes"
    chown postfix "$mail/data"
    chown $mailUser:$mailUser "$mail/boxes"
    cat >"$mail/postfix/main.cf" <<EOF
compatibility_level = 3.6
queue_directory = $mail/queue
data_directory = $mail/data
command_directory = /usr/sbin
daemon_directory = /usr/lib/postfix/sbin
mail_owner = postfix
setgid_group = postdrop
maillog_file = $mail/postfix.log
maillog_file_prefixes = $mail
inet_interfaces = 127.0.0.1
inet_protocols = ipv4
myhostname = mail.example
mydestination =
mynetworks =
alias_maps =
smtpd_recipient_restrictions = reject_unauth_destination, permit
virtual_mailbox_domains = b.example
virtual_mailbox_base = $mail/boxes
virtual_mailbox_maps = inline:{to@b.example=to/ keep@b.example=keep/}
virtual_uid_maps = static:$mailUser
virtual_gid_maps = static:$mailUser
message_size_limit = 0
virtual_mailbox_limit = 0
smtpd_sasl_type = dovecot
smtpd_sasl_path = inet:127.0.0.1:12345
EOF
    cat >"$mail/postfix/master.cf" <<EOF
127.0.0.1:25 inet n - n - - smtpd
127.0.0.1:587 inet n - n - - smtpd
  -o smtpd_sasl_auth_enable=yes
  -o smtpd_recipient_restrictions=permit_sasl_authenticated,reject
cleanup unix n - n - 0 cleanup
qmgr unix n - n 300 1 qmgr
rewrite unix - - n - - trivial-rewrite
bounce unix - - n - 0 bounce
defer unix - - n - 0 bounce
trace unix - - n - 0 bounce
error unix - - n - - error
retry unix - - n - - error
virtual unix - n n - - virtual
anvil unix - - n - 1 anvil
proxymap unix - - n - - proxymap
postlog unix-dgram n - n - 1 postlogd
EOF
}

# Version 2.4 renamed most settings and refuses those of 2.3.
write_dovecot_configuration() {
    local boxes="$mail/boxes/%n" sasl
    case $(dovecot --version) in
    2.[0-3].*)
        sasl=address
        cat <<EOF
protocols = pop3
disable_plaintext_auth = no
auth_mechanisms = plain login
mail_location = maildir:$boxes
passdb {
  driver = static
  args = password=s3cret
}
userdb {
  driver = static
  args = uid=$mailUser gid=$mailUser home=$boxes
}
EOF
        ;;
    *)
        sasl=listen
        boxes="$mail/boxes/%{user | username}"
        cat <<EOF
dovecot_config_version = 2.4.0
dovecot_storage_version = 2.4.0
protocols = pop3
auth_allow_cleartext = yes
auth_mechanisms = plain login
mail_driver = maildir
mail_path = $boxes
passdb static {
  password = s3cret
}
userdb static {
  fields {
    uid = $mailUser
    gid = $mailUser
    home = $boxes
  }
}
EOF
        ;;
    esac
    cat <<EOF
base_dir = $mail/dovecot
log_path = $mail/dovecot.log
listen = 127.0.0.1
ssl = no
first_valid_uid = $mailUser
service auth {
  inet_listener sasl {
    $sasl = 127.0.0.1
    port = 12345
  }
}
EOF
}

start_mail_servers() {
    mail=$wineWorld/mail
    mkdir "$mail"
    chmod 755 "$wineWorld" "$mail"
    write_postfix_configuration
    write_dovecot_configuration >"$mail/dovecot.conf"
    dovecot -F -c "$mail/dovecot.conf" &
    servers+=($!)
    postfix -c "$mail/postfix" start-fg >/dev/null 2>&1 &
    servers+=($!)
    local port deadline=$((SECONDS + 30))
    for port in 25 587 110 12345; do
        until (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; do
            [ $SECONDS -lt $deadline ] || { show_logs && return 1; }
            sleep 0.1
        done
    done
}

show_logs() {
    echo "== what the servers say"
    tail -n 40 "$mail"/*.log || true
}

stop_servers() {
    postfix -c "$mail/postfix" stop >/dev/null 2>&1 || true
    kill "${servers[@]}" 2>/dev/null || true
    wait "${servers[@]}" 2>/dev/null || true
    wine_stop
}

inside() {
    local status=0
    make_silent_network
    wine_start
    servers=()
    mail=
    trap stop_servers EXIT
    start_name_server
    start_mail_servers
    export TERVANE_MAIL_SERVERS=1
    run_unskipped "$arch" "$program" 'MailServers*' || status=$?
    tests/network/mail_check.py keep || status=$?
    [ $status -eq 0 ] || show_logs
    return $status
}

if reason=$(wine_lacks "$arch"); then
    echo "$reason"
    exit 77
fi
enter_network $nameServer "$@"
inside
