<?php
// sample.php WSDL PAGING_SERVER [SECOND_PAGING_SERVER]: sends a message, asks about it, adds a group, and is refused
// once. Status 1 when the message was not sent, or something else failed.

[, $wsdl, $pager] = $argv;
$servers = ['szURL' => $pager, 'szURL2' => $argv[3] ?? null]; // null leaves an element out

set_exception_handler(function (Throwable $error) {
    echo $error instanceof SoapFault ? "fault: $error->faultstring\n" : "failed: {$error->getMessage()}\n";
    exit(1);
});

$service = new SoapClient($wsdl, [
    'features' => SOAP_SINGLE_ELEMENT_ARRAYS, // a list of one stays a list
    // When the service is reached by another address than its description names:
    // 'location' => 'https://soap.plant.example/cgi-bin/quorbel-soap',
]);

$text = $service->SendStdMessage($servers + [
    'szRecipientName' => 'oncall',
    'nPriority' => 2,
    'bTimeStamp' => true,
    'ResponseActionData' => [
        ['szResponse' => '1', 'szAction' => 'ack', 'bFinal' => true],
        ['szResponse' => '2', 'szAction' => 'escalate', 'bFinal' => false],
    ],
    'CustomFieldData' => [['szFieldName' => 'ticket', 'szFieldValue' => 'T-7']],
    'szMessage' => 'Pump 4 <hot> & "loud"',
    'szSender' => 'ops',
])->SendStdMessageResult;
// A message that could not be delivered is no fault: the text then is the transport's. The paging server names a job.
if (!preg_match('/job (\S+)/', $text, $found)) {
    echo 'not sent: ', trim($text), "\n";
    exit(1);
}
echo 'sent: ', trim($text), "\n";

$answer = $service->QueryMessage($servers + ['szJobID' => $found[1]])->QueryMessageResult;
echo "query: $answer->szResponseMessage\n";
foreach ($answer->szResult->string ?? [] as $line) {
    echo "  $line\n";
}

$admin = $servers + ['szAdminName' => 'admin', 'szAdminPassword' => 'secret'];
$added = $service->AddGroup($admin + [
    'szGroupName' => 'night', 'szDescription' => 'Night shift', 'bAlertOwner' => true,
])->AddGroupResult;
echo 'added: ', trim($added), "\n";

try {
    $service->DeleteGroup(['szURL' => $pager, 'szAdminName' => 'admin', 'szAdminPassword' => '',
                           'szGroupName' => 'night']);
} catch (SoapFault $fault) {
    echo "fault: $fault->faultstring\n";
}
