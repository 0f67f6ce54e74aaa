// sample.js WSDL PAGING_SERVER: sends a message, asks about it, adds a group, and is refused once.

import soap from "soap";

const [wsdl, pager] = process.argv.slice(2);
const service = await soap.createClientAsync(wsdl);
// When the service is reached by another address than its description names:
// service.setEndpoint("https://soap.plant.example/cgi-bin/quorbel-soap");

// The properties travel in the order in which they are written here: keep the description's, szURL2 last.
const [sent] = await service.SendStdMessageAsync({
  szURL: pager,
  szRecipientName: "oncall",
  nPriority: 2,
  bTimeStamp: true,
  ResponseActionData: [
    { szResponse: "1", szAction: "ack", bFinal: true },
    { szResponse: "2", szAction: "escalate", bFinal: false },
  ],
  CustomFieldData: [{ szFieldName: "ticket", szFieldValue: "T-7" }],
  szMessage: 'Pump 4 <hot> & "loud"',
  szSender: "ops",
});
console.log("sent:", sent.SendStdMessageResult.trim());

const job = sent.SendStdMessageResult.match(/job (\S+)/)[1];
const [{ QueryMessageResult: answer }] = await service.QueryMessageAsync({ szURL: pager, szJobID: job });
console.log("query:", answer.szResponseMessage);
for (const line of answer.szResult.string) console.log("  " + line);

const admin = { szURL: pager, szAdminName: "admin", szAdminPassword: "secret" };
const [added] = await service.AddGroupAsync({
  ...admin,
  szGroupName: "night",
  szDescription: "Night shift",
  bAlertOwner: true,
});
console.log("added:", added.AddGroupResult.trim());

try {
  await service.DeleteGroupAsync({ ...admin, szAdminPassword: "", szGroupName: "night" });
} catch (error) {
  console.log("fault:", error.root.Envelope.Body.Fault.faultstring);
}
