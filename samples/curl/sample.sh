#!/bin/sh
# sample.sh WSDL PAGING_SERVER [SECOND_PAGING_SERVER]: sends a message, asks about it, adds a group, and is refused once.
# Status 1 when the message was not sent, or something else failed.
set -eu
wsdl=$1 pager=$2 second=${3-}
namespace=http://quorbel.example/soap
endpoint=$(curl -sS --fail "$wsdl" | sed -n 's|.*<soap:address location="\([^"]*\)".*|\1|p')
[ "$endpoint" ] || exit 1

# Characters that XML reserves; only szMessage keeps what they stand for.
escape() { printf %s "$1" | sed 's/&/\&amp;/g; s/</\&lt;/g; s/>/\&gt;/g'; }
unescape() { sed 's/&lt;/</g; s/&gt;/>/g; s/&quot;/"/g; s/&apos;/'"'"'/g; s/&amp;/\&/g' | tr -d '\r'; }
element() { printf '<%s>%s</%s>' "$1" "$(escape "$2")" "$1"; }
item() { printf '<%s>%s</%s>' "$1" "$2" "$1"; }
# The second server comes last in every method, with nothing behind it.
url2() { [ -z "$second" ] || element szURL2 "$second"; }

# call METHOD ELEMENTS: one line, for a line break inside a value costs what stands before it.
call() {
    curl -sS -H 'Content-Type: text/xml; charset=utf-8' -H "SOAPAction: \"$namespace/$1\"" --data-binary @- "$endpoint" <<TEXT
<soap:Envelope xmlns:soap="http://schemas.xmlsoap.org/soap/envelope/"><soap:Body><$1 xmlns="$namespace">$2</$1></soap:Body></soap:Envelope>
TEXT
}
# texts_of ELEMENT: the texts of all elements of that name, one a line.
texts_of() { sed -n "s|.*<$1>\([^<]*\).*|\1|p" | unescape; }
# served ANSWER: ends the script when it is a fault. The HTTP status is 200 for a fault, too: look for the fault string.
served() {
    fault=$(echo "$1" | texts_of faultstring)
    [ -z "$fault" ] || { echo "fault: $fault"; exit 1; }
}

answer=$(call SendStdMessage "$(
    element szURL "$pager"
    element szRecipientName oncall
    element nPriority 2
    element bTimeStamp true
    item ResponseActionData "$(element szResponse 1; element szAction ack; element bFinal true)"
    item ResponseActionData "$(element szResponse 2; element szAction escalate; element bFinal false)"
    item CustomFieldData "$(element szFieldName ticket; element szFieldValue T-7)"
    element szMessage 'Pump 4 <hot> & "loud"'
    element szSender ops
    url2
)")
served "$answer"

# A message that could not be delivered is no fault: the text then is the transport's. The paging server names a job.
text=$(echo "$answer" | texts_of SendStdMessageResult)
job=$(echo "$text" | sed -n 's/.*job \([^ ]*\).*/\1/p')
[ "$job" ] || { echo "not sent: $text"; exit 1; }
echo "sent: $text"

answer=$(call QueryMessage "$(element szURL "$pager"; element szJobID "$job"; url2)")
served "$answer"
echo "query: $(echo "$answer" | texts_of szResponseMessage)"
echo "$answer" | texts_of string | sed 's/^/  /'

admin=$(element szURL "$pager"; element szAdminName admin)
answer=$(call AddGroup "$admin$(
    element szAdminPassword secret
    element szGroupName night
    element szDescription 'Night shift'
    element bAlertOwner true
    url2
)")
served "$answer"
echo "added: $(echo "$answer" | texts_of AddGroupResult)"

refused=$(call DeleteGroup "$admin$(element szAdminPassword ''; element szGroupName night)" | texts_of faultstring)
echo "fault: $refused"
