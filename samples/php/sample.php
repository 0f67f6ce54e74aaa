<?php
// sample.php WSDL PAGING_SERVER: sends a message, asks about it, adds a group, and is refused once.

[, $wsdl, $pager] = $argv;
$service = new SoapClient($wsdl, [
    'features' => SOAP_SINGLE_ELEMENT_ARRAYS, // a list of one stays a list
    // When the service is reached by another address than its description names:
    // 'location' => 'https://soap.plant.example/cgi-bin/quorbel-soap',
]);

$sent = $service->SendStdMessage([
    'szURL' => $pager,
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
echo 'sent: ', trim($sent), "\n";

preg_match('/job (\S+)/', $sent, $found);
$answer = $service->QueryMessage(['szURL' => $pager, 'szJobID' => $found[1]])->QueryMessageResult;
echo "query: $answer->szResponseMessage\n";
foreach ($answer->szResult->string as $line) {
    echo "  $line\n";
}

$admin = ['szURL' => $pager, 'szAdminName' => 'admin', 'szAdminPassword' => 'secret'];
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
